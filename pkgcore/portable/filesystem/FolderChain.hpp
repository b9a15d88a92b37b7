#pragma once

#include <pkgcore/portable/filesystem/FileDescriptor.hpp>

#include <sys/types.h>

#include <cstddef>
#include <vector>

namespace fl::filesystem::posix {

/// The open folders from the root of a tree down to where a walk stands, at any depth with few descriptors:
/// of more than kMaxOpen folders the outer ones are closed, and opened again by way of ".." on the way back.
/// What is found there must be the folder that was left, so that a folder moved away meanwhile never leads
/// the walk out of its tree.
class FolderChain {
public:
    static constexpr std::size_t kMaxOpen = 16;

    explicit FolderChain(FileDescriptor root);

    /// How many folders there are, the root included.
    std::size_t depth() const noexcept { return levels_.size(); }

    int innermost() const noexcept { return levels_.back().folder.get(); }

    /// The folder around the innermost one; open after openParent().
    int parent() const noexcept { return levels_[levels_.size() - 2].folder.get(); }

    /// Whether push() will close a folder, namely the outermost one that is open, counted from the root.
    bool isFull() const noexcept { return levels_.size() - outermostOpen_ == kMaxOpen; }
    std::size_t outermostOpen() const noexcept { return outermostOpen_; }

    /// Closes the outermost folder that is open, as push() does for want of room; false where only the
    /// innermost one is open, or on a failure.
    bool closeOne() noexcept { return outermostOpen_ + 1 < levels_.size() && closeOutermost() == 0; }

    /// Goes into a folder: 0, or an error number with which the chain stays as it was.
    int push(FileDescriptor folder);

    /// Sees to it that the folder around the innermost one is open: 0, or an error number; ESTALE where ".."
    /// is another folder by now. Not for the root.
    int openParent() noexcept;

    /// Leaves the innermost folder after openParent().
    void pop() noexcept { levels_.pop_back(); }

private:
    struct Level {
        FileDescriptor folder;
        dev_t device;  // set, as the inode is, when the folder is closed
        ino_t inode;
    };

    int closeOutermost() noexcept;

    std::vector<Level> levels_;
    std::size_t outermostOpen_ = 0;
};

}  // namespace fl::filesystem::posix
