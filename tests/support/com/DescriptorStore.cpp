#include "tests/support/com/DescriptorStore.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace test {

namespace {

/// The result for errno; `otherwise` where no result of its own stands for it.
HRESULT resultOfError(HRESULT otherwise) {
    switch (errno) {
        case EAGAIN:
            return E_PENDING;
        case EBADF:  // opened for the other direction only
        case EACCES:
        case EPERM:
            return STG_E_ACCESSDENIED;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return STG_E_MEDIUMFULL;
        default:
            return otherwise;
    }
}

/// Moves bytes until all are moved or a call moves none. `call` is given how many are moved already.
template <typename Call>
Moved moveAll(ULONG count, HRESULT atEnd, HRESULT onFailure, Call call) {
    ULONG moved = 0;
    while (moved < count) {
        const ssize_t some = call(moved);
        if (some == 0) {
            return {atEnd, moved};
        }
        if (some > 0) {
            moved += static_cast<ULONG>(some);
        } else if (errno != EINTR) {
            return {resultOfError(onFailure), moved};
        }
    }
    return {S_OK, moved};
}

struct stat statusOf(int descriptor) {
    struct stat status {};
    ::fstat(descriptor, &status);
    return status;
}

/// Steps of 100 ns since 1601.
FILETIME toFileTime(const timespec& time) {
    constexpr std::int64_t secondsFrom1601To1970 = 11'644'473'600;
    const std::int64_t steps = (time.tv_sec + secondsFrom1601To1970) * 10'000'000 + time.tv_nsec / 100;
    return {static_cast<DWORD>(steps & 0xFFFFFFFF), static_cast<DWORD>(steps >> 32)};
}

DWORD accessOf(int descriptor) {
    switch (::fcntl(descriptor, F_GETFL) & O_ACCMODE) {
        case O_RDONLY:
            return STGM_READ;
        case O_WRONLY:
            return STGM_WRITE;
        default:
            return STGM_READWRITE;
    }
}

}  // namespace

DescriptorStore::DescriptorStore(int descriptor)
    : descriptor_(descriptor), canSeek_(::lseek(descriptor, 0, SEEK_CUR) >= 0) {}

DescriptorStore::~DescriptorStore() { ::close(descriptor_); }

std::uint64_t DescriptorStore::size() const {
    return static_cast<std::uint64_t>(statusOf(descriptor_).st_size);
}

Moved DescriptorStore::read(std::uint64_t position, void* bytes, ULONG count) {
    return moveAll(count, S_FALSE, STG_E_READFAULT, [&](ULONG moved) {
        char* const to = static_cast<char*>(bytes) + moved;
        return canSeek_ ? ::pread(descriptor_, to, count - moved, static_cast<off_t>(position + moved))
                        : ::read(descriptor_, to, count - moved);
    });
}

Moved DescriptorStore::write(std::uint64_t position, const void* bytes, ULONG count) {
    return moveAll(count, STG_E_WRITEFAULT, STG_E_WRITEFAULT, [&](ULONG moved) {
        const char* const from = static_cast<const char*>(bytes) + moved;
        return canSeek_ ? ::pwrite(descriptor_, from, count - moved, static_cast<off_t>(position + moved))
                        : ::write(descriptor_, from, count - moved);
    });
}

HRESULT DescriptorStore::setSize(std::uint64_t size) {
    return ::ftruncate(descriptor_, static_cast<off_t>(size)) == 0 ? S_OK
                                                                   : resultOfError(STG_E_INVALIDFUNCTION);
}

HRESULT DescriptorStore::commit() {
    // What has no disk behind it (EINVAL) has nothing to bring there.
    return ::fdatasync(descriptor_) == 0 || errno == EINVAL ? S_OK : resultOfError(STG_E_WRITEFAULT);
}

void DescriptorStore::describe(STATSTG& status) const {
    const struct stat known = statusOf(descriptor_);
    status.mtime = toFileTime(known.st_mtim);
    status.ctime = toFileTime(known.st_ctim);
    status.atime = toFileTime(known.st_atim);
    status.grfMode = accessOf(descriptor_);
}

}  // namespace test
