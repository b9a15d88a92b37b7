#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/DeviceMove.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>

namespace fl::filesystem {

using posix::Place;

namespace {

void refuseDots(const Place& place) {
    if (place.orThrow().endsInDots()) {
        throw InvalidArgument(place.text());
    }
}

/// Whether an error of renameat speaks of the destination, given that the source is there.
bool concernsDestination(int error) {
    switch (error) {
        case ENOENT:
        case ENOTEMPTY:
        case EISDIR:
        case ENOTDIR:
        case EINVAL:
        case ENAMETOOLONG:
        case ENOSPC:
        case EDQUOT:
            return true;
        default:
            return false;
    }
}

/// The system gives one number for two paths; a look at the source tells mostly which one is meant.
[[noreturn]] void throwRenameError(int error, const Place& source, const Place& target) {
    struct stat status;
    const bool found = posix::readStatus(posix::itemAt(source), status) == 0;
    posix::throwError(error, found && concernsDestination(error) ? target.text() : source.text());
}

}  // namespace

void rename(const std::u16string& from, const std::u16string& to) {
    const Place source(from);
    const Place target(to);
    refuseDots(source);
    refuseDots(target);
    const int error = posix::renameItem(posix::itemAt(source), posix::itemAt(target));
    if (error == EXDEV) {
        posix::moveToOtherDevice(source, target);
    } else if (error != 0) {
        throwRenameError(error, source, target);
    }
}

}  // namespace fl::filesystem
