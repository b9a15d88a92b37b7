#include <pkgcore/portable/filesystem/FileDescriptor.hpp>

#include <pkgcore/portable/filesystem/SystemCalls.hpp>

#include <cerrno>

namespace fl::filesystem::posix {

void FileDescriptor::reset(int descriptor) noexcept {
    const int savedError = errno;
    close();
    errno = savedError;
    descriptor_ = descriptor;
}

int FileDescriptor::close() noexcept {
    if (!isOpen()) {
        return 0;
    }
    // Not retried after EINTR: Linux has released the number by then, and another thread may hold it already.
    const bool closed = systemCalls().close(release()) == 0 || errno == EINTR;
    return closed ? 0 : errno;
}

}  // namespace fl::filesystem::posix
