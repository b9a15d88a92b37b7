#pragma once

#include "bench/support/WorkFolder.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <memory>

/// The bare calls of the system that the limits are made of. A failure ends the program: a limit that fails
/// is fast.
namespace bench::raw {

class Descriptor {
public:
    Descriptor(int directory, const char* path, int flags, mode_t mode = 0)
        : descriptor_(::openat(directory, path, flags, mode)) {
        require(descriptor_ >= 0, path);
    }
    ~Descriptor() { ::close(descriptor_); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const noexcept { return descriptor_; }

private:
    int descriptor_;
};

/// A record of getdents64, as the kernel lays it out.
using Record = dirent64;

inline bool isDots(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

/// Calls `visit(const Record&)` for each entry of an open folder but "." and "..". Up to 16 bytes behind a
/// name may be read.
template <typename Visit>
void forEachEntry(int folder, Visit visit) {
    constexpr std::size_t kRecordsSize = 32 * 1024;
    alignas(Record) char records[kRecordsSize + 16];
    for (;;) {
        const long size = ::syscall(SYS_getdents64, folder, records, kRecordsSize);
        require(size >= 0, "getdents64");
        if (size == 0) {
            return;
        }
        for (long at = 0; at < size;) {
            const auto* const record = reinterpret_cast<const Record*>(records + at);
            if (!isDots(record->d_name)) {
                visit(*record);
            }
            at += record->d_reclen;
        }
    }
}

/// Copies by read and write through a buffer of `chunk` bytes; a short read is the end.
inline void copyContent(int from, int to, char* buffer, std::size_t chunk) {
    ssize_t count;
    do {
        count = ::read(from, buffer, chunk);
        require(count >= 0 && ::write(to, buffer, static_cast<std::size_t>(count)) == count, "copy");
    } while (static_cast<std::size_t>(count) == chunk);
}

}  // namespace bench::raw
