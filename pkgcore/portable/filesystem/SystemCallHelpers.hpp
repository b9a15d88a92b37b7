#pragma once

#include <pkgcore/portable/filesystem/FileDescriptor.hpp>
#include <pkgcore/portable/filesystem/SystemCalls.hpp>

#include <cerrno>
#include <cstddef>

namespace fl::filesystem::posix {

/// Calls again as long as a signal interrupts: the one place where EINTR is dealt with.
template <typename Call>
auto retryInterrupted(Call call) noexcept {
    auto result = call();
    while (result == -1 && errno == EINTR) {
        result = call();
    }
    return result;
}

/// openat with O_CLOEXEC, so that no child inherits the descriptor; holds none, with errno set, where it
/// fails.
FileDescriptor openAt(int directory, const char* path, int flags, mode_t mode = 0) noexcept;

/// Whether a folder is there, or a link to one; false also where that cannot be told.
bool isFolder(int directory, const char* path) noexcept;

/// One read; fewer bytes than asked for is normal. -1 with errno set on failure, 0 at the end.
ssize_t readSome(int descriptor, void* bytes, std::size_t count) noexcept;

/// Writes all of it, in as many calls as it takes. 0, or the error number; then a part may have been written.
int writeAll(int descriptor, const char* bytes, std::size_t count) noexcept;

}  // namespace fl::filesystem::posix
