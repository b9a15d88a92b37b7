#pragma once

#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

namespace test {

inline std::string shown(const std::u16string& path) {
    std::string result;
    for (const char16_t unit : path) {
        result += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return result;
}

/// Whether the operation throws exactly `Failure`, about this path.
///
///     EXPECT_TRUE(throwsFor<PathNotFound>(path, [&] { remove_all(path); }));
template <typename Failure, typename Operation>
::testing::AssertionResult throwsFor(const std::u16string& path, Operation operation) {
    try {
        operation();
    } catch (const fl::filesystem::FsysExceptionBase& failure) {
        if (typeid(failure) != typeid(Failure)) {
            return ::testing::AssertionFailure()
                   << "thrown is " << typeid(failure).name() << ", '" << failure.what() << "', about "
                   << shown(failure.get_path_name());
        }
        if (failure.get_path_name() != path) {
            return ::testing::AssertionFailure()
                   << "it is about " << shown(failure.get_path_name()) << ", not about " << shown(path);
        }
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "nothing was thrown";
}

/// The same for SystemError with this number.
template <typename Operation>
::testing::AssertionResult throwsNumberFor(int number, const std::u16string& path, Operation operation) {
    int found = 0;
    const ::testing::AssertionResult result = throwsFor<fl::filesystem::SystemError>(path, [&] {
        try {
            operation();
        } catch (const fl::filesystem::SystemError& failure) {
            found = failure.get_error_code();
            throw;
        }
    });
    if (!result || found == number) {
        return result;
    }
    return ::testing::AssertionFailure() << "the number is " << found << ", not " << number;
}

}  // namespace test
