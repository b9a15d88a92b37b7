#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/NativePath.hpp>
#include <pkgcore/portable/filesystem/SystemCalls.hpp>

#include <fcntl.h>

#include <cerrno>

namespace fl::filesystem {

using posix::Place;
using posix::systemCalls;

namespace {

/// 0 or the error number.
int unlink(const Place& place, int flags) {
    return systemCalls().unlinkat(place.directory(), place.path(), flags) == 0 ? 0 : errno;
}

/// For an item that unlinking refused with `refusal`: that it is a folder, or a reason of its own.
int removeFolder(const Place& place, int refusal) {
    const int error = unlink(place, AT_REMOVEDIR);
    if (error == EEXIST) {
        return ENOTEMPTY;  // POSIX lets a host say either
    }
    return error == ENOTDIR ? refusal : error;
}

}  // namespace

// Unlinking goes first, without a look at what is there: most items are files, and a look could be out of
// date. Linux refuses a folder with EISDIR, POSIX has EPERM for it.
void remove(const std::u16string& path) {
    const Place place(path);
    if (place.orThrow().endsInDots()) {
        throw InvalidArgument(path);
    }
    int error = unlink(place, 0);
    if (error == EISDIR || error == EPERM) {
        error = removeFolder(place, error);
    }
    if (error != 0) {
        posix::throwError(error, path);
    }
}

}  // namespace fl::filesystem
