#pragma once

#include <pkgcore/portable/filesystem/FolderChain.hpp>
#include <pkgcore/portable/filesystem/FolderReader.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>

#include <string>
#include <vector>

namespace fl::filesystem::posix {

/// A walk through a tree of folders by descriptors: the folders on the way to where it stands, each with its
/// listing. No link is followed and no path is built, but for a message: the entries on which the listings
/// stand are the path, and of the folders far up they are all that is kept.
class TreeWalk {
public:
    explicit TreeWalk(FileDescriptor root);

    /// The folder in which the walk stands.
    int folder() const noexcept { return chain_.innermost(); }
    FolderReader& reader() noexcept { return readers_.back(); }
    bool isAtRoot() const noexcept { return chain_.depth() == 1; }

    /// The entry on which the listing stands; its name is valid until the listing moves on.
    Item entry() const noexcept { return {folder(), readers_.back().name()}; }

    /// Goes into a folder that was opened at the entry: 0, or the error number.
    int enter(FileDescriptor folder);

    /// Closes a folder on the way here, so that a descriptor is free; false where there is none to close.
    bool closeOne();

    /// Sees to it that the folder around this one is open and its listing under way: 0, or the error number.
    /// Not for the root.
    int openParent();

    /// After openParent(): ESTALE where this folder is not in the one around it any more, so that the rest of
    /// the listing there begins at a guess, or the error number of looking for it; else 0.
    int cutOff() const noexcept;

    /// This folder as an entry of the one around it, after openParent().
    Item asEntry() const noexcept { return {chain_.parent(), readers_[readers_.size() - 2].name()}; }

    /// Goes back to the folder around this one, after openParent().
    void leave() noexcept;

    /// Reads this folder from its beginning once more.
    void restart();

    /// The paths of the folder and of the entry, below that of the root, which may be empty.
    std::u16string folderPath(const std::u16string& root) const { return path(root, readers_.size() - 1); }
    std::u16string entryPath(const std::u16string& root) const { return path(root, readers_.size()); }

private:
    std::u16string path(const std::u16string& root, std::size_t names) const;

    FolderChain chain_;
    std::vector<FolderReader> readers_;
};

}  // namespace fl::filesystem::posix
