#pragma once

#include <pkgcore/portable/filesystem/FileCopy.hpp>

#include <string>

namespace fl::filesystem::posix {

/// An open folder and its path, for messages.
struct FolderAt {
    FileDescriptor folder;
    const std::u16string& path;
};

/// A folder to copy to.
struct DestinationFolder {
    int error = 0;  ///< if not 0, it cannot be used
    bool created = false;
    FileDescriptor folder;
};

/// Opens a folder, following no link, or creates it, for its owner alone while it is being filled.
DestinationFolder openOrCreateFolder(Item item) noexcept;

/// 0 where `folder` is neither the folder whose status is `item` nor anywhere below it; EINVAL if it is;
/// another error number where that could not be found out.
int refusalIfWithin(int folder, const struct stat& item) noexcept;

/// Copies everything in `from` into `to`, which is completed as well if it was `created`: a created folder
/// gets the nine permission bits of its source when it is full. Throws the first failure, with the path of
/// the item concerned, and leaves what was copied until then; folders that were not completed are for their
/// owner alone.
void copyTree(FolderAt from, FolderAt to, bool created, Times times);

}  // namespace fl::filesystem::posix
