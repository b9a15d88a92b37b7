#pragma once

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/FileSystemOps.hpp>

#include <gtest/gtest.h>
#include <boost/system/error_code.hpp>

#include <string>
#include <type_traits>

/// Expectations about operations that come in two styles of failure. An operation is given as a callable that
/// takes either nothing or an error code:
///
///     EXPECT_TRUE(fails([&](auto&... ec) { return ops.isFile(path, ec...); },
///                       errc::permission_denied, "isFile failed: Access denied: " + name));
namespace test {

inline bool isNeutral(bool result) { return !result; }
inline bool isNeutral(const opc::ustring& result) { return result.empty(); }
inline bool isNeutral(opc::Perms::Perms_tag result) { return result == opc::Perms::NotKnown; }
inline bool isNeutral(boost::posix_time::ptime result) { return result.is_not_a_date_time(); }
inline bool isNeutral(const boost::shared_ptr<std::istream>& result) { return result == nullptr; }
inline bool isNeutral(const boost::shared_ptr<std::ostream>& result) { return result == nullptr; }

inline ::testing::AssertionResult sameCode(const boost::system::error_code& expected,
                                           const boost::system::error_code& actual) {
    const bool same = actual == expected && actual.failed() == expected.failed();
    return (same ? ::testing::AssertionSuccess() : ::testing::AssertionFailure())
           << "the code is " << actual << " (" << actual.message() << "), expected " << expected;
}

/// The throwing style: opc::Exception with this code and this whole text.
template <typename Operation>
::testing::AssertionResult throws(Operation operation, const boost::system::error_code& code,
                                  const std::string& text) {
    try {
        operation();
    } catch (const opc::Exception& failure) {
        if (failure.what() != text) {
            return ::testing::AssertionFailure()
                   << "the text is '" << failure.what() << "', expected '" << text << "'";
        }
        return sameCode(code, failure.code());
    }
    return ::testing::AssertionFailure() << "nothing was thrown";
}

/// The style with a code: this code, and a neutral result if the operation has one.
template <typename Operation>
::testing::AssertionResult reports(Operation operation, const boost::system::error_code& code) {
    auto ec = make_error_code(boost::system::errc::owner_dead);  // must not survive
    if constexpr (std::is_void_v<decltype(operation(ec))>) {
        operation(ec);
    } else if (!isNeutral(operation(ec))) {
        return ::testing::AssertionFailure() << "the result of the failed operation is not the neutral one";
    }
    return sameCode(code, ec);
}

/// Both styles, one after the other.
template <typename Operation>
::testing::AssertionResult fails(Operation operation, const boost::system::error_code& code,
                                 const std::string& text) {
    const ::testing::AssertionResult reported = reports(operation, code);
    return reported ? throws(operation, code, text) : reported;
}

template <typename Operation>
::testing::AssertionResult fails(Operation operation, boost::system::errc::errc_t code,
                                 const std::string& text) {
    return fails(operation, make_error_code(code), text);
}

inline boost::system::error_code systemError(int number) {
    return boost::system::error_code(number, boost::system::system_category());
}

}  // namespace test
