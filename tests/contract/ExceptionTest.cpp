// The library's exception: what it holds and by which handlers it is caught.

#include <pkgcore/core/Exception.hpp>

#include <gtest/gtest.h>

#include <utility>

using boost::system::error_code;
using opc::Exception;
namespace errc = boost::system::errc;

namespace {

const error_code kCode(4711, boost::system::generic_category());

template <typename Handler>
std::string caughtAs(const Exception& failure) {
    try {
        throw failure;
    } catch (const Handler& caught) {
        return caught.what();
    }
}

TEST(Exception, HoldsItsMessageAndItsCode) {
    const Exception failure("words", kCode);
    EXPECT_STREQ(failure.what(), "words");
    EXPECT_EQ(failure.code(), kCode);
    EXPECT_EQ(failure.code().category(), boost::system::generic_category());
    EXPECT_EQ(&failure.code(), &failure.code());
}

TEST(Exception, HoldsAClearedCodeUnchanged) {
    const Exception failure("words", error_code());
    EXPECT_EQ(failure.code().value(), 0);
    EXPECT_FALSE(failure.code().failed());
    EXPECT_EQ(failure.code().category(), boost::system::system_category());
}

TEST(Exception, AddsNothingToItsMessage) {
    EXPECT_STREQ(Exception("", kCode).what(), "");
    EXPECT_STREQ(Exception("copy failed: ", kCode).what(), "copy failed: ");
}

TEST(Exception, IsCopiedWhole) {
    const Exception failure("words", kCode);
    const Exception copy(failure);
    EXPECT_STREQ(copy.what(), "words");
    EXPECT_EQ(copy.code(), kCode);
}

TEST(Exception, KeepsItsMessageWhenItIsMovedFrom) {
    Exception failure("words", kCode);
    const Exception moved(std::move(failure));
    EXPECT_STREQ(moved.what(), "words");
    EXPECT_EQ(moved.code(), kCode);
    EXPECT_STREQ(failure.what(), "words");  // NOLINT(bugprone-use-after-move): this is what is promised
    EXPECT_EQ(failure.code(), kCode);
}

TEST(Exception, OutlivesTheOneItWasCopiedFrom) {
    auto failure = std::make_unique<Exception>("words that are too long for any buffer inside", kCode);
    const Exception copy(*failure);
    failure.reset();
    EXPECT_STREQ(copy.what(), "words that are too long for any buffer inside");
}

TEST(Exception, IsCaughtByItsOwnTypeAndItsBases) {
    const Exception failure("words", kCode);
    EXPECT_EQ(caughtAs<Exception>(failure), "words");
    EXPECT_EQ(caughtAs<std::runtime_error>(failure), "words");
    EXPECT_EQ(caughtAs<std::exception>(failure), "words");
}

}  // namespace
