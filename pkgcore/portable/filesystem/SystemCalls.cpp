#include <pkgcore/portable/filesystem/SystemCalls.hpp>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace fl::filesystem::posix {

namespace {

// openat takes its mode through an ellipsis, and the functions below have no wrapper, or none of this shape, in the C
// library.
int hostOpenat(int directory, const char* path, int flags, mode_t mode) {
    return ::openat(directory, path, flags, mode);
}

int hostFiclone(int to, int from) { return ::ioctl(to, FICLONE, from); }

ssize_t hostGetdents64(int directory, void* records, size_t size) {
    return ::syscall(SYS_getdents64, directory, records, size);
}

}  // namespace

const SystemCalls hostCalls = {
    hostOpenat,  ::close,      ::read,        ::write,      ::lseek,     ::ftruncate,
    ::fallocate, hostFiclone,  ::fstat,       ::fstatat,    hostGetdents64, ::mkdirat,
    ::unlinkat,  ::renameat,   ::symlinkat,   ::readlinkat, ::fchmod,    ::fchmodat,
    ::utimensat, ::futimens,   ::getrandom,   ::getcwd,     ::fdopen,
};

std::atomic<const SystemCalls*> callsInForce{&hostCalls};

}  // namespace fl::filesystem::posix
