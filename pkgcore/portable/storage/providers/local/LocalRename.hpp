#pragma once

#include <pkgcore/portable/filesystem/Item.hpp>

#include <string>

/// Renaming on the terms of a store.
namespace foundation::storage::portable {

/// Renames to a name that nothing has: 0 or the error number, EEXIST where something is there. Where the file
/// system cannot do that in one step, something that comes in between is replaced.
int renameNew(fl::filesystem::posix::Item from, fl::filesystem::posix::Item to) noexcept;

/// Moves an item to a path at which nothing is, also to another file system. Throws what the file system
/// throws.
void moveNew(const std::u16string& from, const std::u16string& to);

/// Moves an item to a path, in the place of a file or of a whole folder there, which goes.
void moveOver(const std::u16string& from, const std::u16string& to);

}  // namespace foundation::storage::portable
