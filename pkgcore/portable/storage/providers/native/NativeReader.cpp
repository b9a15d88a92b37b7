#include <pkgcore/portable/storage/providers/native/NativeReader.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>
#include <pkgcore/portable/storage/providers/native/NativeErrors.hpp>

#include <algorithm>

namespace foundation::storage::portable {

namespace posix = fl::filesystem::posix;

namespace {

void throwIfFailed(int error) {
    if (error != 0) {
        posix::throwError(error, std::u16string());
    }
}

}  // namespace

NativeReader::NativeReader(posix::FileDescriptor file) : file_(std::move(file)) {
    asStorage(Purpose::Reading, [this] {
        struct stat status;
        throwIfFailed(posix::readStatus(file_.get(), status));
        if (S_ISDIR(status.st_mode)) {
            throw fl::filesystem::FileIsDirectory(std::u16string());
        }
        isRegular_ = S_ISREG(status.st_mode);
        if (!isRegular_) {
            return;
        }
        // A file that claims to be empty may hold something all the same: those of /proc do.
        char probe;
        if (status.st_size > 0 || readHere(&probe, 1) == 0) {
            size_ = static_cast<std::uint64_t>(status.st_size);
        }
    });
}

void NativeReader::goTo(std::uint64_t offset) {
    if (offset == here_) {
        return;
    }
    const off_t reached = posix::systemCalls().lseek(file_.get(), static_cast<off_t>(offset), SEEK_SET);
    throwIfFailed(reached < 0 ? errno : 0);
    here_ = offset;
}

/// What is no regular file gives what it has, without waiting for more.
std::size_t NativeReader::readHere(char* out, std::size_t count) {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t taken = posix::readSome(file_.get(), out + done, count - done);
        throwIfFailed(taken < 0 ? errno : 0);
        done += static_cast<std::size_t>(taken);
        here_ += static_cast<std::uint64_t>(taken);
        if (taken == 0 || !isRegular_) {
            break;
        }
    }
    return done;
}

std::size_t NativeReader::readAt(std::uint64_t offset, char* out, std::size_t count) {
    return asStorage(Purpose::Reading, [&]() -> std::size_t {
        const std::uint64_t left = !size_ ? count : offset < *size_ ? *size_ - offset : 0;
        if (left == 0) {
            return 0;
        }
        goTo(offset);
        return readHere(out, static_cast<std::size_t>(std::min<std::uint64_t>(count, left)));
    });
}

std::size_t NativeReader::read(char* out, std::size_t count) {
    const std::size_t taken = readAt(next_, out, count);
    next_ += taken;
    return taken;
}

}  // namespace foundation::storage::portable
