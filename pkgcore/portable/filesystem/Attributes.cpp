#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/FileTimes.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>

namespace fl::filesystem {

using posix::Place;
using posix::systemCalls;

namespace {

timespec readTime(const Place& place) {
    struct stat status;
    if (const int error = posix::readStatus(posix::itemAt(place), status); error != 0) {
        posix::throwError(error, place.text());
    }
    return status.st_mtim;
}

/// 0 or the error number.
int writeTime(const Place& place, const timespec& time) {
    const timespec times[2] = {{0, UTIME_OMIT}, time};  // access, modification
    return posix::errorOf(
        [&] { return systemCalls().utimensat(place.directory(), place.path(), times, AT_SYMLINK_NOFOLLOW); });
}

/// Whether `kept` is `asked` in the coarser steps of a file system: of up to a second, or the two seconds of
/// FAT. The end of a file system's span of time, at which other times are kept, is no such step.
bool isRoundedDown(const timespec& kept, const timespec& asked) {
    if (kept.tv_sec == asked.tv_sec) {
        return kept.tv_nsec <= asked.tv_nsec;
    }
    return kept.tv_sec == asked.tv_sec - 1 && kept.tv_sec % 2 == 0 && kept.tv_nsec == 0;
}

}  // namespace

void permissions(const std::u16string& path, unsigned bits) {
    const Place place(path);
    const int directory = place.orThrow().directory();
    const int flags = (bits & file_status::perms_symlink) != 0 ? AT_SYMLINK_NOFOLLOW : 0;
    const int error = posix::errorOf([&] {
        return systemCalls().fchmodat(directory, place.path(), bits & file_status::perms_all, flags);
    });
    if (error != 0) {
        posix::throwError(error, path);
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
