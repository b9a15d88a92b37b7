#include <pkgcore/portable/filesystem/SystemCalls.hpp>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace fl::filesystem::posix {

namespace {

// openat takes its mode through an ellipsis, and the functions below have no wrapper, or none of this shape,
// in the C library.
int hostOpenat(int directory, const char* path, int flags, mode_t mode) {
    return ::openat(directory, path, flags, mode);
}

// Linux 5.6 has it, on all architectures under one number.
#if defined(SYS_openat2)
constexpr long kOpenat2 = SYS_openat2;
#else
constexpr long kOpenat2 = 437;
#endif

int hostOpenat2(int directory, const char* path, const open_how* how) {
    return static_cast<int>(::syscall(kOpenat2, directory, path, how, sizeof *how));
}

int hostFiclone(int to, int from) { return ::ioctl(to, FICLONE, from); }

// The same number on every architecture but Alpha; older headers do not know it.
#if defined(SYS_fchmodat2)
constexpr long kFchmodat2 = SYS_fchmodat2;
#else
constexpr long kFchmodat2 = 452;
#endif

// The C library acts on a link itself by way of /proc, which takes four calls and needs /proc to be there;
// Linux 6.6 has it in one call.
int hostFchmodat(int directory, const char* path, mode_t mode, int flags) {
    if ((flags & AT_SYMLINK_NOFOLLOW) != 0) {
        const long result = ::syscall(kFchmodat2, directory, path, mode, flags);
        // Sandboxes that do not know the call yet refuse it with EPERM.
        if (result == 0 || (errno != ENOSYS && errno != EPERM)) {
            return static_cast<int>(result);
        }
    }
    return ::fchmodat(directory, path, mode, flags);
}

ssize_t hostGetdents64(int directory, void* records, size_t size) {
    return ::syscall(SYS_getdents64, directory, records, size);
}

}  // namespace

const SystemCalls kHostCalls = {
    hostOpenat,  hostOpenat2, ::close,     ::read,       ::write,        ::lseek,      ::ftruncate,
    ::fallocate, hostFiclone, ::fstat,     ::fstatat,    hostGetdents64, ::mkdirat,    ::unlinkat,
    ::renameat,  ::renameat2, ::symlinkat, ::readlinkat, ::fchmod,       hostFchmodat, ::utimensat,
    ::futimens,  ::syncfs,    ::sync,      ::getrandom,  ::getcwd,       ::fdopen,
};

std::atomic<const SystemCalls*> callsInForce{&kHostCalls};

}  // namespace fl::filesystem::posix
