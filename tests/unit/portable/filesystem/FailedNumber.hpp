#pragma once

#include "tests/unit/portable/filesystem/FailedPath.hpp"

namespace test {

/// Whether the operation fails with this error number of the system, about this path, where no exception of
/// its own stands for the number.
template <typename Operation>
::testing::AssertionResult failsWith(int number, const std::u16string& path, Operation operation) {
    int found = 0;
    const std::u16string about = failedPath<fl::filesystem::SystemError>([&] {
        try {
            operation();
        } catch (const fl::filesystem::SystemError& failure) {
            found = failure.get_error_code();
            throw;
        }
    });
    if (found == number && about == path) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure()
           << "the number is " << found << " and the path " << ::testing::PrintToString(about);
}

}  // namespace test
