#include <pkgcore/core/Exception.hpp>

#include <gtest/gtest.h>

#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

using boost::system::error_code;
using opc::Exception;
namespace errc = boost::system::errc;

namespace {

const error_code kFailure = errc::make_error_code(errc::file_exists);

static_assert(std::is_base_of_v<std::runtime_error, Exception>);
static_assert(std::is_convertible_v<Exception*, std::runtime_error*>);
static_assert(!std::is_default_constructible_v<Exception>);
static_assert(!std::is_constructible_v<Exception, std::string>);
static_assert(!std::is_copy_assignable_v<Exception>);
static_assert(!std::is_move_assignable_v<Exception>);
static_assert(std::is_nothrow_copy_constructible_v<Exception>);
static_assert(std::is_nothrow_move_constructible_v<Exception>);
static_assert(std::is_nothrow_destructible_v<Exception>);
static_assert(std::has_virtual_destructor_v<Exception>);
static_assert(std::is_same_v<decltype(std::declval<const Exception&>().code()), const error_code&>);

TEST(Exception, KeepsItsMessageAndItsCode) {
    const Exception exception("copy failed: no room", kFailure);
    EXPECT_STREQ(exception.what(), "copy failed: no room");
    EXPECT_EQ(exception.code(), kFailure);
    EXPECT_TRUE(exception.code().failed());
    EXPECT_EQ(&exception.code().category(), &boost::system::generic_category());
}

TEST(Exception, WithADefaultCodeReportsNoFailureInIt) {
    const Exception exception("text", error_code());
    EXPECT_FALSE(exception.code().failed());
    EXPECT_EQ(exception.code().value(), 0);
    EXPECT_EQ(exception.code().category(), boost::system::system_category());
}

TEST(Exception, TakesAnEmptyMessageAsItIs) { EXPECT_STREQ(Exception("", kFailure).what(), ""); }

TEST(Exception, GivesTheSameCodeObjectEachTime) {
    const Exception exception("text", kFailure);
    EXPECT_EQ(&exception.code(), &exception.code());
}

TEST(Exception, CopiesMessageAndCode) {
    const Exception original("text", kFailure);
    const Exception copy(original);
    EXPECT_STREQ(copy.what(), "text");
    EXPECT_EQ(copy.code(), kFailure);
    EXPECT_STREQ(original.what(), "text");
}

TEST(Exception, StaysWholeWhenItIsMovedFrom) {
    Exception original("a text that is too long to be kept inside of a string object", kFailure);
    const Exception moved(std::move(original));
    EXPECT_STREQ(moved.what(), "a text that is too long to be kept inside of a string object");
    EXPECT_EQ(moved.code(), kFailure);
    EXPECT_STREQ(original.what(), "a text that is too long to be kept inside of a string object");
    EXPECT_EQ(original.code(), kFailure);
}

TEST(Exception, OutlivesTheOneItWasCopiedFrom) {
    auto original = std::make_unique<Exception>("text", kFailure);
    const Exception copy(*original);
    original.reset();
    EXPECT_STREQ(copy.what(), "text");
}

template <typename Handler>
void expectCaughtAs() {
    try {
        throw Exception("createFolder failed: ", kFailure);
    } catch (const Handler& caught) {
        EXPECT_STREQ(caught.what(), "createFolder failed: ");
        return;
    }
    FAIL() << "not caught";
}

TEST(Exception, IsCaughtAsItselfAndAsItsBases) {
    expectCaughtAs<Exception>();
    expectCaughtAs<std::runtime_error>();
    expectCaughtAs<std::exception>();
}

TEST(Exception, TravelsInAnExceptionPointer) {
    std::exception_ptr pointer = std::make_exception_ptr(Exception("text", kFailure));
    try {
        std::rethrow_exception(pointer);
    } catch (const Exception& caught) {
        EXPECT_STREQ(caught.what(), "text");
        EXPECT_EQ(caught.code(), kFailure);
    }
}

}  // namespace
