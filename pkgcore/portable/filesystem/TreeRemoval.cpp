#include <pkgcore/portable/filesystem/TreeRemoval.hpp>

#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/TreeWalk.hpp>

#include <dirent.h>

#include <utility>
#include <vector>

namespace fl::filesystem::posix {

namespace {

// Somebody who swaps a file and a folder without end must not keep the removal from ending.
constexpr int kMaxSwaps = 8;

/// What came of an attempt to remove an item: it is gone (error 0), it could not be removed, or it is a
/// folder, opened to be emptied first.
struct Attempt {
    int error;
    FileDescriptor folder;
};

/// Whether unlinking may have failed because the item is a folder. Linux says EISDIR, POSIX EPERM, and a
/// folder that may not be changed around it comes first with EACCES; what is in such an item can be removed
/// all the same.
bool mayBeFolder(int unlinkError) {
    return unlinkError == EISDIR || unlinkError == EPERM || unlinkError == EACCES;
}

/// An empty folder can be removed even if it cannot be opened.
int removeUnopened(Item item, int openError) {
    const int error = unlinkItem(item, AT_REMOVEDIR);
    return error == 0 || error == ENOENT ? error : openError;
}

/// What cannot be opened up is told by what comes next.
FileDescriptor openToEmpty(Item item, Ownership ownership) {
    if (ownership == Ownership::ours) {
        errorOf([&] { return systemCalls().fchmodat(item.folder, item.name, S_IRWXU, AT_SYMLINK_NOFOLLOW); });
    }
    return openFolder(item);
}

/// Each step names the item afresh, so what was a file a moment ago may be a folder now, or the reverse.
Attempt removeOrOpen(Item item, bool looksLikeFolder, Ownership ownership) {
    int error = looksLikeFolder ? EISDIR : unlinkItem(item, 0);
    if (!mayBeFolder(error)) {
        return {error, {}};
    }
    for (int swaps = 0; swaps < kMaxSwaps; ++swaps) {
        FileDescriptor folder = openToEmpty(item, ownership);
        if (folder.isOpen()) {
            return {0, std::move(folder)};
        }
        if (errno != ENOTDIR) {
            return {removeUnopened(item, errno), {}};
        }
        error = unlinkItem(item, 0);
        if (error != EISDIR) {
            break;
        }
    }
    return {error, {}};
}

int removeEmptied(Item folder) {
    const int error = unlinkItem(folder, AT_REMOVEDIR);
    return error == ENOTDIR ? unlinkItem(folder, 0) : error;
}

class TreeRemoval {
public:
    TreeRemoval(Item root, FileDescriptor folder, const std::u16string& path, Ownership ownership)
        : root_(root), path_(path), ownership_(ownership), walk_(std::move(folder)), levels_(1) {}

    void run() {
        while (!levels_.empty()) {
            if (walk_.reader().next()) {
                removeEntry();
            } else {
                finishFolder();
            }
        }
        if (firstError_ != 0) {
            throwError(firstError_, firstPath_);
        }
    }

private:
    struct Level {
        bool progressed = false;  // something went since the listing began
        bool failed = false;      // something stays, so the folder does too
    };

    void removeEntry() {
        Attempt attempt = attemptEntry();
        while (isOutOfDescriptors(attempt.error) && walk_.closeOne()) {
            attempt = attemptEntry();
        }
        if (attempt.folder.isOpen()) {
            attempt.error = walk_.enter(std::move(attempt.folder));
            if (attempt.error == 0) {
                levels_.emplace_back();
                return;
            }
        }
        if (attempt.error == 0) {
            levels_.back().progressed = true;
        } else if (attempt.error != ENOENT) {  // ENOENT: somebody else was faster, which is as good
            fail(attempt.error, &TreeWalk::entryPath);
        }
    }

    Attempt attemptEntry() {
        return removeOrOpen(walk_.entry(), walk_.reader().type() == DT_DIR, ownership_);
    }

    void finishFolder() {
        if (const int error = walk_.reader().error(); error != 0) {
            fail(error, &TreeWalk::folderPath);
        }
        if (!walk_.isAtRoot()) {
            openParent();
        }
        if (removeFolder()) {
            leave();
        }
    }

    /// Where the way back is lost nothing more can be done, so this throws at once.
    void openParent() {
        if (const int error = walk_.openParent(); error != 0) {
            fail(error, &TreeWalk::folderPath);
            throwError(firstError_, firstPath_);
        }
    }

    /// Removes the folder in which the walk stands. False where it has to be read once more: some file
    /// systems pass over entries while others are removed, and other processes add some.
    bool removeFolder() {
        if (levels_.back().failed) {
            return true;
        }
        const int error = removeEmptied(walk_.isAtRoot() ? root_ : walk_.asEntry());
        if (error == ENOTEMPTY && levels_.back().progressed) {
            levels_.back().progressed = false;
            walk_.restart();
            return false;
        }
        if (error != 0 && error != ENOENT) {
            fail(error, &TreeWalk::folderPath);
        }
        return true;
    }

    void leave() {
        const bool failed = levels_.back().failed;
        levels_.pop_back();
        if (levels_.empty()) {
            return;
        }
        walk_.leave();
        levels_.back().failed |= failed;
        levels_.back().progressed |= !failed;
    }

    void fail(int error, std::u16string (TreeWalk::*path)(const std::u16string&) const) {
        levels_.back().failed = true;
        if (firstError_ == 0) {
            firstError_ = error;
            firstPath_ = (walk_.*path)(path_);
        }
    }

    Item root_;
    const std::u16string& path_;
    Ownership ownership_;
    TreeWalk walk_;
    std::vector<Level> levels_;
    int firstError_ = 0;
    std::u16string firstPath_;
};

}  // namespace

void removeTree(Item item, const std::u16string& path, Ownership ownership) {
    Attempt attempt = removeOrOpen(item, false, ownership);
    if (attempt.folder.isOpen()) {
        TreeRemoval(item, std::move(attempt.folder), path, ownership).run();
    } else if (attempt.error != 0) {
        throwError(attempt.error, path);
    }
}

}  // namespace fl::filesystem::posix
