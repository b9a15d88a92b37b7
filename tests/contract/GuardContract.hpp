#pragma once

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace contract {

/// An exception that a platform may throw.
struct Thrown {
    std::string text;
    std::exception_ptr exception;

    /// Whether `work` ends with this very exception.
    testing::AssertionResult leaves(const std::function<void()>& work) const {
        try {
            work();
        } catch (...) {
            return std::current_exception() == exception ? testing::AssertionSuccess()
                                                         : testing::AssertionFailure() << "not " << text;
        }
        return testing::AssertionFailure() << text << " was swallowed";
    }
};

template <typename Failure>
Thrown fileSystemFailure(const std::string& text) {
    return {text, std::make_exception_ptr(Failure(text, u"path", {}))};
}

/// One of each type of the file system's family, each with the path "path".
inline std::vector<Thrown> fileSystemFailures() {
    namespace fsys = fl::filesystem;
    return {fileSystemFailure<fsys::FsysExceptionBase>("FsysExceptionBase"),
            fileSystemFailure<fsys::AccessDenied>("AccessDenied"),
            fileSystemFailure<fsys::PathNotFound>("PathNotFound"),
            fileSystemFailure<fsys::FileExistsError>("FileExistsError"),
            fileSystemFailure<fsys::FileNameTooLarge>("FileNameTooLarge"),
            fileSystemFailure<fsys::NotDirectoryError>("NotDirectoryError"),
            fileSystemFailure<fsys::DirectoryNotEmpty>("DirectoryNotEmpty"),
            fileSystemFailure<fsys::FileIsDirectory>("FileIsDirectory"),
            fileSystemFailure<fsys::InvalidOperation>("InvalidOperation"),
            fileSystemFailure<fsys::InvalidArgument>("InvalidArgument"),
            fileSystemFailure<fsys::FileNameConversionFailure>("FileNameConversionFailure"),
            {"SystemError", std::make_exception_ptr(fsys::SystemError("SystemError", 5, u"path"))}};
}

/// Exceptions of no such type: the library's own, standard ones, and things that are no exception classes.
inline std::vector<Thrown> otherExceptions() {
    return {{"opc::Exception", std::make_exception_ptr(opc::Exception("text", {}))},
            {"std::runtime_error", std::make_exception_ptr(std::runtime_error("text"))},
            {"std::bad_alloc", std::make_exception_ptr(std::bad_alloc())},
            {"std::string", std::make_exception_ptr(std::string("text"))},
            {"a text", std::make_exception_ptr("text")},
            {"a number", std::make_exception_ptr(7)}};
}

/// A scripted platform on which every path is absolute unless the test says otherwise.
class GuardContract : public testing::Test {
protected:
    GuardContract() { platform.is_absolute.returns(true); }

    /// An opc::Exception with exactly this text and a cleared code.
    static void expectException(const std::function<void()>& work, const std::string& text) {
        try {
            work();
            ADD_FAILURE() << "nothing was thrown instead of: " << text;
        } catch (const opc::Exception& failure) {
            EXPECT_EQ(failure.what(), text);
            EXPECT_EQ(failure.code().value(), 0);
            EXPECT_FALSE(failure.code().failed());
            EXPECT_EQ(failure.code().category(), boost::system::system_category());
        }
    }

    static void forEachException(const std::function<void(const Thrown&)>& body) {
        for (const std::vector<Thrown>& some : {fileSystemFailures(), otherExceptions()}) {
            for (const Thrown& thrown : some) {
                SCOPED_TRACE(thrown.text);
                body(thrown);
            }
        }
    }

    scripted::Platform platform;
};

}  // namespace contract
