#include <pkgcore/portable/filesystem/FileContent.hpp>

#include <unistd.h>

#include <algorithm>
#include <limits>

namespace fl::filesystem::posix {

namespace {

// Larger chunks gain nothing and fall out of the processor's cache; smaller ones cost more calls.
constexpr off_t kLargestBuffer = 256 * 1024L;
constexpr off_t kSmallestBuffer = 16 * 1024L;

constexpr off_t kBytesPerBlock = 512;  // the unit of st_blocks, whatever the file system's own block is
constexpr off_t kToTheEnd = std::numeric_limits<off_t>::max();

bool hasHoles(const struct stat& status) { return status.st_blocks * kBytesPerBlock < status.st_size; }

/// Whether no other file on this pair of file systems will fare better.
bool isFinalRefusal(int error) {
    return error == EOPNOTSUPP || error == ENOTTY || error == ENOSYS || error == EXDEV || error == EPERM;
}

bool meansNoRoom(int error) { return error == ENOSPC || error == EDQUOT || error == EFBIG; }

/// Reserves the blocks of a file that is about to be written, which makes writing much faster and tells at
/// once that there is no room. Any other failure is none: the file can be written without.
///
/// Not called again after EINTR: some file systems give up all that they had reserved when a signal arrives,
/// and a timer would then keep a large file from ever being copied.
int reserveBlocks(int file, off_t size) {
    const int error = systemCalls().fallocate(file, 0, 0, size) == 0 ? 0 : errno;
    return meansNoRoom(error) ? error : 0;
}

int setSize(int file, off_t size) {
    return errorOf([&] { return systemCalls().ftruncate(file, size); });
}

/// -1 with errno set on failure.
off_t seek(int file, off_t offset, int whence) {
    return retryInterrupted([&] { return systemCalls().lseek(file, offset, whence); });
}

int seekTo(int file, off_t offset) { return seek(file, offset, SEEK_SET) == -1 ? errno : 0; }

Outcome seekBoth(int from, int to, off_t offset) {
    if (const int error = seekTo(from, offset); error != 0) {
        return atSource(error);
    }
    return atDestination(seekTo(to, offset));
}

/// Where the data that begins at `start` ends. A hole made there since then is as good as one byte of data:
/// what counts is that the search gets on.
off_t endOfData(int file, off_t start) {
    const off_t hole = seek(file, start, SEEK_HOLE);
    return hole == -1 ? kToTheEnd : std::max(hole, start + 1);
}

/// Gives the copy the size of a file that ends with a hole.
Outcome endWithHole(int from, int to) {
    const off_t size = seek(from, 0, SEEK_END);
    return size == -1 ? atSource(errno) : atDestination(setSize(to, size));
}

}  // namespace

Outcome FileContent::copy(int from, const struct stat& status, int to) {
    if (status.st_size > 0 && shareBlocks(from, to)) {
        return {};
    }
    provideBuffer(status.st_size);
    bool copied = false;
    if (hasHoles(status)) {
        const Outcome outcome = copyIslands(from, to, copied);
        if (copied || outcome.failed()) {
            return outcome;
        }
    }
    return copyWhole(from, status, to);
}

bool FileContent::shareBlocks(int from, int to) noexcept {
    if (!mayShare_) {
        return false;
    }
    const int error = errorOf([&] { return systemCalls().ficlone(to, from); });
    mayShare_ = !isFinalRefusal(error);
    return error == 0;
}

/// Copies the data between the holes. Leaves `copied` false, with both files at their start, where the file
/// system does not tell them apart.
Outcome FileContent::copyIslands(int from, int to, bool& copied) {
    off_t at = 0;
    for (;;) {
        const off_t start = seek(from, at, SEEK_DATA);
        if (start == -1 && errno != ENXIO) {
            return at == 0 ? Outcome{} : atSource(errno);
        }
        copied = true;
        if (start == -1) {
            return endWithHole(from, to);
        }
        const off_t size = endOfData(from, start) - start;
        off_t done = 0;
        Outcome outcome = seekBoth(from, to, start);
        if (!outcome.failed()) {
            outcome = copyBytes(from, to, size, done);
        }
        if (outcome.failed()) {
            return outcome;
        }
        if (done <
            size) {  // the file ends here, whatever its status says: those of /sys claim more than they hold
            return atDestination(setSize(to, start + done));
        }
        at = start + size;
    }
}

Outcome FileContent::copyWhole(int from, const struct stat& status, int to) {
    const bool reserve = status.st_size > kLargestBuffer;
    if (const int error = reserve ? reserveBlocks(to, status.st_size) : 0; error != 0) {
        return atDestination(error);
    }
    off_t copied = 0;
    const Outcome outcome = copyBytes(from, to, kToTheEnd, copied);
    if (outcome.failed() || !reserve || copied >= status.st_size) {
        return outcome;
    }
    return atDestination(setSize(to, copied));
}

/// Copies up to `count` bytes; fewer are `copied` only where the file ends.
Outcome FileContent::copyBytes(int from, int to, off_t count, off_t& copied) {
    while (copied < count) {
        const off_t chunk = std::min(static_cast<off_t>(bufferSize_), count - copied);
        const ssize_t size = readSome(from, buffer_.get(), static_cast<std::size_t>(chunk));
        if (size < 0) {
            return atSource(errno);
        }
        if (size == 0) {
            return {};
        }
        if (const int error = writeAll(to, buffer_.get(), static_cast<std::size_t>(size)); error != 0) {
            return atDestination(error);
        }
        copied += size;
    }
    return {};
}

void FileContent::provideBuffer(off_t fileSize) {
    const auto size = static_cast<std::size_t>(std::clamp(fileSize, kSmallestBuffer, kLargestBuffer));
    if (bufferSize_ < size) {
        buffer_.reset(new char[size]);  // not make_unique: it would clear what is overwritten at once
        bufferSize_ = size;
    }
}

}  // namespace fl::filesystem::posix
