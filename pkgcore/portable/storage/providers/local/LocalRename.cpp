#include <pkgcore/portable/storage/providers/local/LocalRename.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/storage/providers/local/LocalSibling.hpp>

#include <cstdio>

namespace foundation::storage::portable {

namespace fs = fl::filesystem;
namespace posix = fl::filesystem::posix;

using posix::Item;

namespace {

int renameWith(Item from, Item to, unsigned flags) noexcept {
    return posix::errorOf(
        [&] { return posix::systemCalls().renameat2(from.folder, from.name, to.folder, to.name, flags); });
}

/// File systems and systems of an older age do not know the flags.
bool isUnknown(int error) noexcept { return error == EINVAL || error == ENOSYS || error == ENOTSUP; }

bool isThere(Item item) noexcept {
    struct stat status;
    return posix::readStatus(item, status) == 0;
}

bool areOneItem(Item one, Item other) noexcept {
    struct stat first;
    struct stat second;
    return posix::readStatus(one, first) == 0 && posix::readStatus(other, second) == 0 &&
           posix::isSameItem(first, second);
}

/// What is at a path, put away under another name until it is clear whether it goes.
void replaceByTurns(const std::u16string& from, const std::u16string& to) {
    const std::u16string old = localSibling(to);
    fs::rename(to, old);
    try {
        fs::rename(from, to);
    } catch (...) {
        fs::rename(old, to);
        throw;
    }
    fs::remove_all(old);
}

void replaceFolder(const std::u16string& from, const std::u16string& to) {
    const posix::Place source(from);
    const posix::Place target(to);
    const int error =
        renameWith(posix::itemAt(source.orThrow()), posix::itemAt(target.orThrow()), RENAME_EXCHANGE);
    if (error == 0) {
        fs::remove_all(from);
    } else if (isUnknown(error) || error == EXDEV) {
        replaceByTurns(from, to);
    } else {
        posix::throwError(error, to);
    }
}

}  // namespace

int renameNew(Item from, Item to) noexcept {
    const int error = renameWith(from, to, RENAME_NOREPLACE);
    if (!isUnknown(error)) {
        return error;
    }
    return isThere(to) ? EEXIST : renameWith(from, to, 0);
}

void moveNew(const std::u16string& from, const std::u16string& to) {
    const posix::Place source(from);
    const posix::Place target(to);
    const Item item = posix::itemAt(target.orThrow());
    const int error = renameNew(posix::itemAt(source.orThrow()), item);
    if (error == EXDEV && !isThere(item)) {
        fs::rename(from, to);
    } else if (error != 0) {
        posix::throwError(error == EXDEV ? EEXIST : error, to);
    }
}

void moveOver(const std::u16string& from, const std::u16string& to) {
    const posix::Place source(from);
    const posix::Place target(to);
    if (areOneItem(posix::itemAt(source.orThrow()), posix::itemAt(target.orThrow()))) {
        fs::remove(from);  // the system would leave two names of one file as they are
        return;
    }
    try {
        fs::rename(from, to);
    } catch (const fs::DirectoryNotEmpty&) {
        replaceFolder(from, to);
    }
}

}  // namespace foundation::storage::portable
