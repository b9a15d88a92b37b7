#pragma once

#include <pkgcore/portable/filesystem/NativePath.hpp>
#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <fcntl.h>
#include <sys/stat.h>

namespace fl::filesystem::posix {

/// A name in an open folder (or AT_FDCWD and a path), as the `*at` calls take it.
struct Item {
    int folder;
    const char* name;
};

inline Item itemAt(const Place& place) noexcept { return {place.directory(), place.path()}; }

/// Makes a call that gives -1 with errno set on failure, again where a signal interrupts it: 0 or the error
/// number.
template <typename Call>
int errorOf(Call call) noexcept {
    return retryInterrupted(call) == -1 ? errno : 0;
}

/// The status of an item itself, or of what is open: 0 or the error number.
inline int readStatus(Item item, struct stat& status) noexcept {
    return errorOf(
        [&] { return systemCalls().fstatat(item.folder, item.name, &status, AT_SYMLINK_NOFOLLOW); });
}
inline int readStatus(int descriptor, struct stat& status) noexcept {
    return errorOf([&] { return systemCalls().fstat(descriptor, &status); });
}

/// Whether two status records speak of one item, whatever its names.
inline bool isSameItem(const struct stat& one, const struct stat& other) noexcept {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

/// Opens a folder for reading and as a way to what is in it. None, with errno set, where it fails; ENOTDIR
/// for a link, for which systems have two numbers.
inline FileDescriptor openFolder(Item item) noexcept {
    FileDescriptor folder = openAt(item.folder, item.name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
    if (!folder.isOpen() && errno == ELOOP) {
        errno = ENOTDIR;
    }
    return folder;
}

/// Whether there are no descriptors left, of the process or of the system.
inline bool isOutOfDescriptors(int error) noexcept { return error == EMFILE || error == ENFILE; }

/// An error number for a folder that must be empty and is not, of which POSIX lets a host choose between two.
inline int withOneNumberForNotEmpty(int error) noexcept { return error == EEXIST ? ENOTEMPTY : error; }

/// Renames an item, over what the system's rename replaces: 0 or the error number.
inline int renameItem(Item from, Item to) noexcept {
    return withOneNumberForNotEmpty(
        errorOf([&] { return systemCalls().renameat(from.folder, from.name, to.folder, to.name); }));
}

/// Unlinks an item: 0 or the error number. `flags` is 0, or AT_REMOVEDIR for an empty folder.
inline int unlinkItem(Item item, int flags) noexcept {
    return withOneNumberForNotEmpty(
        errorOf([&] { return systemCalls().unlinkat(item.folder, item.name, flags); }));
}

}  // namespace fl::filesystem::posix
