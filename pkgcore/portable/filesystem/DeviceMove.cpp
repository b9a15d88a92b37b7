#include <pkgcore/portable/filesystem/DeviceMove.hpp>

#include <pkgcore/portable/filesystem/FolderReader.hpp>
#include <pkgcore/portable/filesystem/LinkCopy.hpp>
#include <pkgcore/portable/filesystem/MoveSafety.hpp>
#include <pkgcore/portable/filesystem/ParentFolder.hpp>
#include <pkgcore/portable/filesystem/TemporarySibling.hpp>
#include <pkgcore/portable/filesystem/TreeCopy.hpp>
#include <pkgcore/portable/filesystem/TreeRemoval.hpp>

#include <utility>

namespace fl::filesystem::posix {

namespace {

/// False also where that cannot be told; the renaming will.
bool holdsSomething(Item item) {
    const FileDescriptor folder = openFolder(item);
    return folder.isOpen() && FolderReader(folder.get()).next();
}

/// What renaming will refuse in the end, found before gigabytes are copied for nothing: 0 or the error
/// number.
int refusalToReplace(Item target, const struct stat& targetStatus, const struct stat& sourceStatus) {
    const bool ontoFolder = S_ISDIR(targetStatus.st_mode);
    if (ontoFolder != S_ISDIR(sourceStatus.st_mode)) {
        return ontoFolder ? EISDIR : ENOTDIR;
    }
    return ontoFolder && holdsSomething(target) ? ENOTEMPTY : 0;
}

class DeviceMove {
public:
    DeviceMove(const Place& source, const Place& target)
        : source_(source), target_(target), from_(source), to_(target) {}

    void run() {
        checkSource(readStatus(from_.item(), status_));
        if (isThereAlready()) {
            return;
        }
        makeCopy();
        // What is there now must be what was copied.
        checkSource(changeSince(status_, from_.item()));
        removeTree(from_.item(), source_.text());
    }

private:
    void checkSource(int error) const { check(atSource(error)); }
    void checkTarget(int error) const { check(atDestination(error)); }
    void check(Outcome outcome) const { throwIfFailed(outcome, source_.text(), target_.text()); }

    /// Looks at what is at the destination. One item under two names, as through a folder that is mounted
    /// twice, is left alone, as POSIX has rename do: to remove the source would be to remove the item.
    bool isThereAlready() const {
        struct stat status;
        const int error = readStatus(to_.item(), status);
        if (error != 0) {
            checkTarget(error == ENOENT ? 0 : error);
            return false;
        }
        if (isSameItem(status, status_)) {
            return true;
        }
        checkTarget(refusalToReplace(to_.item(), status, status_));
        return false;
    }

    void makeCopy() const {
        TemporarySibling sibling(to_.folder());
        const Disk disk(to_.folder());
        switch (status_.st_mode & S_IFMT) {
            case S_IFREG:
                copyFile(sibling);
                break;
            case S_IFLNK:
                copyLink(sibling);
                break;
            case S_IFDIR:
                copyFolder(sibling);
                break;
            default:
                checkSource(ENOTSUP);
        }
        checkTarget(sibling.moveTo(to_.item()));
        // The source goes next, and after that a failing power supply must find the copy on the disk.
        checkTarget(disk.sync());
    }

    void copyFile(TemporarySibling& sibling) const {
        CreationBits known;
        check(FileCopy(Times::Carried).copyNew(from_.item(), sibling.item(), known));
        sibling.setMade(true);
    }

    void copyLink(TemporarySibling& sibling) const {
        check(posix::copyLink(from_.item(), sibling.item(), Times::Carried));
        sibling.setMade(true);
    }

    void copyFolder(TemporarySibling& sibling) const {
        FileDescriptor folder = openFolder(from_.item());
        checkSource(folder.isOpen() ? 0 : errno);
        checkTarget(refusalIfWithin(to_.folder(), status_));
        DestinationFolder destination = openOrCreateFolder(sibling.item());
        if (destination.created) {
            sibling.setMade(true);
        }
        checkTarget(destination.error);
        checkTarget(destination.created ? 0 : EEXIST);
        copyTree({std::move(folder), source_.text()}, {std::move(destination.folder), target_.text()},
                 destination.created, Times::Carried);
    }

    const Place& source_;
    const Place& target_;
    ParentFolder from_;
    ParentFolder to_;
    struct stat status_;
};

}  // namespace

void moveToOtherDevice(const Place& source, const Place& target) { DeviceMove(source, target).run(); }

}  // namespace fl::filesystem::posix
