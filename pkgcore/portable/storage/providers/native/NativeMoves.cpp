#include <pkgcore/portable/storage/providers/native/NativeMoves.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/LinkCopy.hpp>
#include <pkgcore/portable/filesystem/MoveSafety.hpp>
#include <pkgcore/portable/filesystem/TemporarySibling.hpp>
#include <pkgcore/portable/filesystem/TreeCopy.hpp>
#include <pkgcore/portable/filesystem/TreeRemoval.hpp>
#include <pkgcore/portable/storage/providers/native/NativeErrors.hpp>

#include <cstdio>
#include <cstring>
#include <string>

namespace foundation::storage::portable {

namespace posix = fl::filesystem::posix;

using posix::Item;
using provider::ReplacementPolicy;

namespace {

const std::u16string kNoPath;

void throwIfFailed(int error) {
    if (error != 0) {
        posix::throwError(error, kNoPath);
    }
}

int renameWith(Item from, Item to, unsigned flags) noexcept {
    return posix::errorOf(
        [&] { return posix::systemCalls().renameat2(from.folder, from.name, to.folder, to.name, flags); });
}

/// File systems and systems of an older age do not know the flags.
bool isUnknown(int error) noexcept { return error == EINVAL || error == ENOSYS || error == ENOTSUP; }

struct stat statusOf(Item item) {
    struct stat status;
    throwIfFailed(posix::readStatus(item, status));
    return status;
}

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

/// Makes a call whose failure leaves something under a temporary name: who is told of it must know the name.
template <typename Call>
void leaving(Item rest, Call call) {
    try {
        asStorage(Purpose::Creating, call);
    } catch (const vfs::Exception& failure) {
        throw vfs::Exception(failure.getErrorCode(),
                             std::string(failure.what()) + "; what is left is called " + rest.name);
    }
}

void removeRest(Item rest) {
    leaving(rest, [&] { posix::removeTree(rest, kNoPath); });
}

/// Moves a folder out of the way to a temporary name and removes it: a rest under the name of a source, moved
/// again with replacement, would take the place of the whole. `undo` is called where it keeps its name. The
/// other name is drawn before anything is changed: that takes memory.
template <typename Undo>
void removeAside(Item folder, Item aside, const Undo& undo) {
    if (const int error = renameNew(folder, aside); error != 0) {
        undo();
        throwIfFailed(error);
    }
    removeRest(aside);
}

/// The old folder is put away under another name until the new one is in place.
void replaceByTurns(Item from, Item to) {
    const posix::TemporarySibling old(to.folder);
    throwIfFailed(posix::renameItem(to, old.item()));
    if (const int error = posix::renameItem(from, to); error != 0) {
        leaving(old.item(), [&] { throwIfFailed(posix::renameItem(old.item(), to)); });
        throwIfFailed(error);
    }
    removeRest(old.item());
}

/// What goes may hold what comes, where links on the way have hidden that.
void refuseWhatHolds(Item from, Item to) {
    struct stat old;
    const int error = posix::readStatus(to, old);
    throwIfFailed(error == ENOENT ? 0 : error);
    if (error == 0 && S_ISDIR(old.st_mode)) {
        throwIfFailed(posix::refusalIfWithin(from.folder, old));
    }
}

/// Both change places in one step, and then the old one goes.
void replaceFolder(Item from, Item to) {
    refuseWhatHolds(from, to);
    const posix::TemporarySibling aside(from.folder);
    const int error = renameWith(from, to, RENAME_EXCHANGE);
    if (error == 0) {
        removeAside(from, aside.item(), [&] { renameWith(from, to, RENAME_EXCHANGE); });
    } else if (isUnknown(error)) {
        replaceByTurns(from, to);
    } else {
        throwIfFailed(error);
    }
}

/// Whether two items are one name in one folder, on whatever ways the folder is reached.
bool areOneName(Item one, Item other) noexcept {
    return areOneItem({one.folder, "."}, {other.folder, "."}) && std::strcmp(one.name, other.name) == 0;
}

/// Gives one of two names of a file up, but never the only one: where letter case does not count, one name
/// looks like two.
void dropName(Item from, Item to) {
    const posix::TemporarySibling aside(from.folder);
    throwIfFailed(renameNew(from, aside.item()));
    const bool hasOther = areOneItem(aside.item(), to);
    const int error = hasOther ? posix::unlinkItem(aside.item(), 0) : 0;
    if (!hasOther || error != 0) {
        leaving(aside.item(), [&] { throwIfFailed(renameNew(aside.item(), from)); });
    }
    throwIfFailed(error);
}

/// Renaming leaves two names of one item as they are, unless they differ in letter case alone where that does
/// not count.
void moveOntoItself(Item from, Item to) {
    const int error = posix::renameItem(from, to);
    throwIfFailed(error == EXDEV ? 0 : error);
    struct stat status;
    const bool isLeft = posix::readStatus(from, status) == 0;
    if (isLeft && !S_ISDIR(status.st_mode) && status.st_nlink > 1 && !areOneName(from, to)) {
        dropName(from, to);
    }
}

void moveToOtherDevice(Item from, Item to, ReplacementPolicy policy) {
    const struct stat source = statusOf(from);
    const posix::TemporarySibling aside(from.folder);
    const posix::Disk disk(to.folder);
    copyItem(from, to, policy, posix::Times::Carried);
    throwIfFailed(disk.sync());
    throwIfFailed(posix::changeSince(source, from));
    if (S_ISDIR(source.st_mode)) {
        removeAside(from, aside.item(), [] {});
    } else {
        posix::removeTree(from, kNoPath);
    }
}

void copyContents(Item from, Item to, const struct stat& status, posix::Times times) {
    if (S_ISDIR(status.st_mode)) {
        posix::FileDescriptor source = posix::openFolder(from);
        throwIfFailed(source.isOpen() ? 0 : errno);
        posix::DestinationFolder target = posix::openOrCreateFolder(to);
        throwIfFailed(target.error);
        posix::copyTree({std::move(source), kNoPath}, {std::move(target.folder), kNoPath}, true, times);
    } else if (S_ISLNK(status.st_mode)) {
        posix::throwIfFailed(posix::copyLink(from, to, times), kNoPath, kNoPath);
    } else {
        throwIfFailed(posix::refusalToCopy(status));
        posix::CreationBits known;
        posix::throwIfFailed(posix::FileCopy(times).copyNew(from, to, known), kNoPath, kNoPath);
    }
}

}  // namespace

int renameNew(Item from, Item to) noexcept {
    const int error = renameWith(from, to, RENAME_NOREPLACE);
    if (!isUnknown(error)) {
        return error;
    }
    return isThere(to) ? EEXIST : posix::renameItem(from, to);
}

void moveItem(Item from, Item to, ReplacementPolicy policy) {
    const bool replaces = policy == ReplacementPolicy::ReplaceExisting;
    if (replaces && areOneItem(from, to)) {
        moveOntoItself(from, to);
        return;
    }
    const int error = replaces ? posix::renameItem(from, to) : renameNew(from, to);
    if (error == EXDEV) {
        moveToOtherDevice(from, to, policy);
    } else if (error == ENOTEMPTY) {
        replaceFolder(from, to);
    } else {
        throwIfFailed(error);
    }
}

void copyItem(Item from, Item to, ReplacementPolicy policy, posix::Times times) {
    const struct stat status = statusOf(from);
    throwIfFailed(areOneItem(from, to) ? EINVAL : 0);
    if (policy == ReplacementPolicy::ReplaceExisting) {
        refuseWhatHolds(from, to);
    }
    posix::TemporarySibling copy(to.folder);
    copy.setMade(true);
    copyContents(from, copy.item(), status, times);
    moveItem(copy.item(), to, policy);
    copy.setMade(false);
}

void syncFileSystemOf(Item item) { throwIfFailed(posix::Disk(item.folder).sync()); }

}  // namespace foundation::storage::portable
