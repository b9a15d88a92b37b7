#pragma once

#include <pkgcore/portable/filesystem/Item.hpp>

namespace fl::filesystem::posix {

/// The folder around an item, held open: other names in it can be used and nobody can move it away between
/// two calls.
class ParentFolder {
public:
    /// Throws, with the item's path, where there is no such folder. The name refers to `item`.
    explicit ParentFolder(const Place& item);

    int folder() const noexcept { return folder_.get(); }

    /// The item itself, as a name in the folder.
    Item item() const noexcept { return {folder(), name_}; }

private:
    const char* name_;
    FileDescriptor folder_;
};

}  // namespace fl::filesystem::posix
