#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/FileTimes.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>
#include <pkgcore/portable/filesystem/ModifiedTime.hpp>

namespace fl::filesystem {

using posix::Place;
using posix::systemCalls;

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

void last_write_time(const std::u16string& path, boost::posix_time::ptime time) {
    if (time.is_special()) {
        throw InvalidArgument(path);
    }
    const Place place(path);
    const int error = posix::setModifiedTime(posix::itemAt(place.orThrow()), posix::toTimespec(time));
    if (error != 0) {
        posix::throwError(error, path);
    }
}

}  // namespace fl::filesystem
