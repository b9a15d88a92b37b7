#include <pkgcore/portable/filesystem/FolderChain.hpp>

#include <pkgcore/portable/filesystem/Item.hpp>

#include <utility>

namespace fl::filesystem::posix {

FolderChain::FolderChain(FileDescriptor root) { levels_.push_back({std::move(root), 0, 0}); }

int FolderChain::push(FileDescriptor folder) {
    if (const int error = isFull() ? closeOutermost() : 0; error != 0) {
        return error;
    }
    levels_.push_back({std::move(folder), 0, 0});
    return 0;
}

int FolderChain::openParent() noexcept {
    Level& parent = levels_[levels_.size() - 2];
    if (parent.folder.isOpen()) {
        return 0;
    }
    FileDescriptor folder = openFolder({innermost(), ".."});
    if (!folder.isOpen()) {
        return errno;
    }
    struct stat status;
    if (const int error = readStatus(folder.get(), status); error != 0) {
        return error;
    }
    if (status.st_dev != parent.device || status.st_ino != parent.inode) {
        return ESTALE;
    }
    parent.folder = std::move(folder);
    --outermostOpen_;
    return 0;
}

int FolderChain::closeOutermost() noexcept {
    Level& level = levels_[outermostOpen_];
    struct stat status;
    if (const int error = readStatus(level.folder.get(), status); error != 0) {
        return error;
    }
    level.device = status.st_dev;
    level.inode = status.st_ino;
    level.folder.reset();
    ++outermostOpen_;
    return 0;
}

}  // namespace fl::filesystem::posix
