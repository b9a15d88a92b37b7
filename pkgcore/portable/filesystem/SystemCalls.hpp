#pragma once

#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <atomic>
#include <cstdio>
#include <ctime>

namespace fl::filesystem::posix {

/// Every call that this folder makes of the system, as POSIX or Linux names it. Nothing here calls the system
/// past this table, so that a test can replace one entry to fail, to shorten a transfer or to count. Results
/// and errno are those of the system; EINTR is dealt with by the helpers in SystemCallHelpers.hpp.
struct SystemCalls {
    int (*openat)(int directory, const char* path, int flags, mode_t mode);
    int (*openat2)(int directory, const char* path, const open_how* how);
    int (*close)(int descriptor);
    ssize_t (*read)(int descriptor, void* bytes, size_t count);
    ssize_t (*write)(int descriptor, const void* bytes, size_t count);
    off_t (*lseek)(int descriptor, off_t offset, int whence);
    int (*ftruncate)(int descriptor, off_t length);
    int (*fallocate)(int descriptor, int mode, off_t offset, off_t length);
    int (*ficlone)(int to, int from);  ///< ioctl FICLONE: share all blocks of `from`
    int (*fstat)(int descriptor, struct stat* status);
    int (*fstatat)(int directory, const char* path, struct stat* status, int flags);
    ssize_t (*getdents64)(int directory, void* records, size_t size);
    int (*mkdirat)(int directory, const char* path, mode_t mode);
    int (*unlinkat)(int directory, const char* path, int flags);
    int (*renameat)(int fromDirectory, const char* from, int toDirectory, const char* to);
    int (*renameat2)(int fromDirectory, const char* from, int toDirectory, const char* to, unsigned flags);
    int (*symlinkat)(const char* target, int directory, const char* path);
    ssize_t (*readlinkat)(int directory, const char* path, char* text, size_t size);
    int (*fchmod)(int descriptor, mode_t mode);
    int (*fchmodat)(int directory, const char* path, mode_t mode, int flags);  ///< knows AT_SYMLINK_NOFOLLOW
    int (*utimensat)(int directory, const char* path, const timespec times[2], int flags);
    int (*futimens)(int descriptor, const timespec times[2]);
    int (*syncfs)(int descriptor);
    void (*sync)();
    ssize_t (*getrandom)(void* bytes, size_t count, unsigned flags);
    char* (*getcwd)(char* path, size_t size);
    std::FILE* (*fdopen)(int descriptor, const char* mode);
};

/// The system's own functions.
extern const SystemCalls kHostCalls;

/// The table in force; never null. Only tests store to it, while no operation runs.
extern std::atomic<const SystemCalls*> callsInForce;

inline const SystemCalls& systemCalls() noexcept { return *callsInForce.load(std::memory_order_relaxed); }

}  // namespace fl::filesystem::posix
