#include <pkgcore/portable/filesystem/TreeCopy.hpp>

#include <pkgcore/portable/filesystem/LinkCopy.hpp>
#include <pkgcore/portable/filesystem/TreeWalk.hpp>

#include <dirent.h>

#include <cerrno>
#include <utility>
#include <vector>

namespace fl::filesystem::posix {

namespace {

constexpr mode_t kWhileFilled = 0700;

class TreeCopy {
public:
    TreeCopy(FolderAt from, FolderAt to, Times times)
        : fromPath_(from.path),
          toPath_(to.path),
          times_(times),
          files_(times),
          source_(std::move(from.folder)),
          destination_(std::move(to.folder)) {}

    void run(bool created) {
        checkFolder(atDestination(readStatus(destination_.innermost(), destinationRoot_)));
        struct stat status;
        checkFolder(atSource(readStatus(source_.folder(), status)));
        levels_.push_back({status.st_mode & kCopiedBits, created, {}});
        while (!levels_.empty()) {
            if (source_.reader().next()) {
                copyEntry();
            } else {
                finishFolder();
            }
        }
    }

private:
    struct Level {
        mode_t bits;
        bool created;
        CreationBits known;
    };

    void checkEntry(Outcome outcome) const {
        if (outcome.failed()) {
            throwIfFailed(outcome, source_.entryPath(fromPath_), source_.entryPath(toPath_));
        }
    }

    void checkFolder(Outcome outcome) const {
        if (outcome.failed()) {
            throwIfFailed(outcome, source_.folderPath(fromPath_), source_.folderPath(toPath_));
        }
    }

    Item from() const noexcept { return source_.entry(); }
    Item to() const noexcept { return {destination_.innermost(), source_.entry().name}; }

    void copyEntry() {
        switch (typeOfEntry()) {
            case DT_REG:
                return copyFile();
            case DT_LNK:
                return checkEntry(copyLink(from(), to(), times_));
            case DT_DIR:
                return enterFolder();
            default:
                return checkEntry(atSource(ENOTSUP));
        }
    }

    void copyFile() {
        Outcome outcome = files_.copyNew(from(), to(), levels_.back().known);
        while (isOutOfDescriptors(outcome.error) && closeOne()) {
            outcome = files_.copyNew(from(), to(), levels_.back().known);
        }
        checkEntry(outcome);
    }

    /// Makes room for more descriptors, on both sides if it can.
    bool closeOne() {
        const bool closedSource = source_.closeOne();
        return destination_.closeOne() || closedSource;
    }

    unsigned char typeOfEntry() {
        const unsigned char type = source_.reader().type();
        if (type != DT_UNKNOWN) {
            return type;
        }
        struct stat status;
        checkEntry(atSource(readStatus(from(), status)));
        return static_cast<unsigned char>(IFTODT(status.st_mode));
    }

    void enterFolder() {
        struct stat status {};
        FileDescriptor folder = openSource(status);
        DestinationFolder destination = openOrCreateFolder(to());
        while (isOutOfDescriptors(destination.error) && closeOne()) {
            const bool created = destination.created;
            destination = openOrCreateFolder(to());
            destination.created |= created;
        }
        checkEntry(atDestination(destination.error));
        checkEntry(atDestination(destination_.push(std::move(destination.folder))));
        checkEntry(atSource(source_.enter(std::move(folder))));
        levels_.push_back({status.st_mode & kCopiedBits, destination.created, {}});
    }

    // That the destination is not below the source was made sure of before; a folder moved, or mounted twice,
    // can make it so all the same, and the copy would never end.
    FileDescriptor openSource(struct stat& status) {
        FileDescriptor folder = openFolder(from());
        while (!folder.isOpen() && isOutOfDescriptors(errno) && closeOne()) {
            folder = openFolder(from());
        }
        checkEntry(atSource(folder.isOpen() ? readStatus(folder.get(), status) : errno));
        checkEntry(atSource(isSameItem(status, destinationRoot_) ? EINVAL : 0));
        return folder;
    }

    void finishFolder() {
        checkFolder(atSource(source_.reader().error()));
        if (levels_.back().created) {
            checkFolder(completeFolder());
        }
        levels_.pop_back();
        if (!levels_.empty()) {
            leaveFolder();
        }
    }

    Outcome completeFolder() {
        const int folder = destination_.innermost();
        const mode_t bits = levels_.back().bits;
        if (const int error = errorOf([&] { return systemCalls().fchmod(folder, bits); }); error != 0) {
            return atDestination(error);
        }
        if (times_ == Times::New) {
            return {};
        }
        struct stat status;
        const int error = readStatus(source_.folder(), status);
        return error != 0 ? atSource(error) : atDestination(carryTimes(status, folder));
    }

    void leaveFolder() {
        checkFolder(atSource(source_.openParent()));
        checkFolder(atSource(source_.cutOff()));  // a guess could leave something out
        checkFolder(atDestination(destination_.openParent()));
        source_.leave();
        destination_.pop();
    }

    const std::u16string& fromPath_;
    const std::u16string& toPath_;
    Times times_;
    FileCopy files_;
    TreeWalk source_;
    FolderChain destination_;
    struct stat destinationRoot_;
    std::vector<Level> levels_;
};

}  // namespace

DestinationFolder openOrCreateFolder(Item item) noexcept {
    const int error = errorOf([&] { return systemCalls().mkdirat(item.folder, item.name, kWhileFilled); });
    if (error != 0 && error != EEXIST) {
        return {error, false, {}};
    }
    const bool created = error == 0;
    FileDescriptor folder = openFolder(item);
    if (created && !folder.isOpen() && errno == EACCES) {
        // The process's umask took the owner's own permissions away.
        errorOf([&] {
            return systemCalls().fchmodat(item.folder, item.name, kWhileFilled, AT_SYMLINK_NOFOLLOW);
        });
        folder = openFolder(item);
    }
    if (!folder.isOpen()) {
        return {errno, created, {}};
    }
    const int modeError =
        created ? errorOf([&] { return systemCalls().fchmod(folder.get(), kWhileFilled); }) : 0;
    return {modeError, created, std::move(folder)};
}

int refusalIfWithin(int folder, const struct stat& item) noexcept {
    FileDescriptor above;
    struct stat below = item;
    for (;;) {
        struct stat status;
        if (const int error = readStatus(folder, status); error != 0) {
            return error;
        }
        if (isSameItem(status, item)) {
            return EINVAL;
        }
        if (isSameItem(status, below)) {
            return 0;  // the root is its own parent
        }
        below = status;
        above = openAt(folder, "..", O_PATH | O_DIRECTORY);
        if (!above.isOpen()) {
            // A folder that cannot be passed on the way up stops a copy on its way down as well.
            return errno == EACCES ? 0 : errno;
        }
        folder = above.get();
    }
}

void copyTree(FolderAt from, FolderAt to, bool created, Times times) {
    TreeCopy(std::move(from), std::move(to), times).run(created);
}

}  // namespace fl::filesystem::posix
