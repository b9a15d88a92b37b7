#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/FileTimes.hpp>
#include <pkgcore/portable/filesystem/NativePath.hpp>
#include <pkgcore/portable/filesystem/SystemCalls.hpp>

#include <fcntl.h>

#include <cerrno>

namespace fl::filesystem {

using posix::Place;
using posix::systemCalls;

namespace {

timespec readTime(const Place& place) {
    struct stat status;
    if (systemCalls().fstatat(place.directory(), place.path(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        posix::throwError(errno, place.text());
    }
    return status.st_mtim;
}

int writeTime(const Place& place, const timespec& time) {
    const timespec times[2] = {{0, UTIME_OMIT}, time};  // access, modification
    const int result = systemCalls().utimensat(place.directory(), place.path(), times, AT_SYMLINK_NOFOLLOW);
    return result == 0 ? 0 : errno;
}

/// Whether `kept` is `asked`, but for a file system's coarser steps: the coarsest, those of FAT, are of two
/// seconds.
bool isRoundedDown(const timespec& kept, const timespec& asked) {
    constexpr time_t kCoarsestStep = 2;
    const bool later =
        kept.tv_sec > asked.tv_sec || (kept.tv_sec == asked.tv_sec && kept.tv_nsec > asked.tv_nsec);
    return !later && kept.tv_sec > asked.tv_sec - kCoarsestStep;
}

}  // namespace

void permissions(const std::u16string& path, unsigned bits) {
    const Place place(path);
    const int flags = (bits & file_status::perms_symlink) != 0 ? AT_SYMLINK_NOFOLLOW : 0;
    if (systemCalls().fchmodat(place.orThrow().directory(), place.path(), bits & file_status::perms_all,
                               flags) != 0) {
        posix::throwError(errno, path);
    }
}

// Linux clamps a time that the file system cannot hold and says nothing; only reading it back tells.
void last_write_time(const std::u16string& path, boost::posix_time::ptime time) {
    if (time.is_special()) {
        throw InvalidArgument(path);
    }
    const Place place(path);
    const timespec before = readTime(place.orThrow());
    const timespec asked = posix::toTimespec(time);
    if (const int error = writeTime(place, asked); error != 0) {
        posix::throwError(error, path);
    }
    if (!isRoundedDown(readTime(place), asked)) {
        // A failure here changes nothing about what is thrown: the time that was asked for could not be kept.
        writeTime(place, before);
        throw InvalidArgument(path);
    }
}

}  // namespace fl::filesystem
