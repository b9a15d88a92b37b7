#include <pkgcore/platform/filesystem/Operations.hpp>

#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/FileTimes.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>
#include <pkgcore/portable/filesystem/ItemKind.hpp>

namespace fl::filesystem {

namespace {

/// Whether anything is at the path, and its status. Nothing there is the most frequent answer of all and
/// throws nothing.
bool findItem(const std::u16string& path, struct stat& status) {
    if (path.empty()) {
        return false;
    }
    const posix::Place place(path);
    const int error = place.error() != 0 ? place.error() : posix::readStatus(posix::itemAt(place), status);
    if (error != 0 && error != ENOENT && error != ENOTDIR) {
        posix::throwError(error, path);
    }
    return error == 0;
}

}  // namespace

file_status symlink_status(const std::u16string& path) {
    struct stat found;
    file_status status;
    if (findItem(path, found)) {
        status.kind = posix::kindOfMode(found.st_mode);
        status.permissions = found.st_mode & file_status::perms_all;
        status.lastWriteTime = posix::toPtime(found.st_mtim);
    }
    return status;
}

bool exists(const std::u16string& path) { return file_status::exists(symlink_status(path)); }

}  // namespace fl::filesystem
