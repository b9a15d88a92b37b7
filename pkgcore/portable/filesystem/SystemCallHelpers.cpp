#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <fcntl.h>

namespace fl::filesystem::posix {

FileDescriptor openAt(int directory, const char* path, int flags, mode_t mode) noexcept {
    return FileDescriptor(
        retryInterrupted([&] { return systemCalls().openat(directory, path, flags | O_CLOEXEC, mode); }));
}

bool isFolder(int directory, const char* path) noexcept {
    struct stat status;
    const int result = retryInterrupted([&] { return systemCalls().fstatat(directory, path, &status, 0); });
    return result == 0 && S_ISDIR(status.st_mode);
}

ssize_t readSome(int descriptor, void* bytes, std::size_t count) noexcept {
    return retryInterrupted([&] { return systemCalls().read(descriptor, bytes, count); });
}

int writeAll(int descriptor, const char* bytes, std::size_t count) noexcept {
    while (count > 0) {
        const ssize_t written =
            retryInterrupted([&] { return systemCalls().write(descriptor, bytes, count); });
        if (written < 0) {
            return errno;
        }
        if (written == 0) {
            return EIO;  // no progress and no reason: better an error than a loop without end
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return 0;
}

}  // namespace fl::filesystem::posix
