#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>

namespace fl::filesystem {

using posix::Place;

namespace {

/// For an item that unlinking refused with `refusal`: that it is a folder, or a reason of its own.
int removeFolder(posix::Item item, int refusal) {
    const int error = posix::unlinkItem(item, AT_REMOVEDIR);
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
    const posix::Item item = posix::itemAt(place);
    int error = posix::unlinkItem(item, 0);
    if (error == EISDIR || error == EPERM) {
        error = removeFolder(item, error);
    }
    if (error != 0) {
        posix::throwError(error, path);
    }
}

}  // namespace fl::filesystem
