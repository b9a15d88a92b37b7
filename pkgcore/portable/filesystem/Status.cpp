#include <pkgcore/platform/filesystem/Operations.hpp>

#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/FileTimes.hpp>
#include <pkgcore/portable/filesystem/ItemKind.hpp>
#include <pkgcore/portable/filesystem/NativePath.hpp>
#include <pkgcore/portable/filesystem/SystemCalls.hpp>

#include <fcntl.h>

#include <cerrno>

namespace fl::filesystem {

namespace {

int readStatus(const posix::Place& place, struct stat& status) {
    if (place.error() != 0) {
        return place.error();
    }
    const int result =
        posix::systemCalls().fstatat(place.directory(), place.path(), &status, AT_SYMLINK_NOFOLLOW);
    return result == 0 ? 0 : errno;
}

/// Whether anything is at the path, and its status. Nothing there is the most frequent answer of all and
/// throws nothing.
bool findItem(const std::u16string& path, struct stat& status) {
    if (path.empty()) {
        return false;
    }
    const posix::Place place(path);
    const int error = readStatus(place, status);
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
