#pragma once

#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include <gtest/gtest.h>

#include <string>

namespace test {

/// Runs an operation that must fail in this way, and returns the path that its exception names.
template <typename Failure, typename Operation>
std::u16string failedPath(Operation operation) {
    try {
        operation();
    } catch (const Failure& failure) {
        return failure.get_path_name();
    } catch (const fl::filesystem::FsysExceptionBase& failure) {
        ADD_FAILURE() << "another failure: " << failure.what();
        return u"(another failure)";
    }
    ADD_FAILURE() << "no failure";
    return u"(no failure)";
}

/// The same for fl::filesystem::SystemError; returns the error number.
template <typename Operation>
int failedNumber(Operation operation) {
    try {
        operation();
    } catch (const fl::filesystem::SystemError& failure) {
        return failure.get_error_code();
    } catch (const fl::filesystem::FsysExceptionBase& failure) {
        ADD_FAILURE() << "another failure: " << failure.what();
        return -1;
    }
    ADD_FAILURE() << "no failure";
    return 0;
}

}  // namespace test
