#pragma once

#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/portable/filesystem/FileCopy.hpp>

/// Copying and moving items of the host on the terms of a store. Links are copied and moved as links.
namespace foundation::storage::portable {

/// Renames to a name that nothing has: 0 or the error number, EEXIST where something is there. Where the file
/// system cannot do that in one step, something that comes in between is replaced.
int renameNew(fl::filesystem::posix::Item from, fl::filesystem::posix::Item to) noexcept;

/// Moves an item, in the place of a file or of a whole folder there if the policy allows it; on the way to
/// another file system it is copied. Throws what the file system throws. A folder that was replaced or
/// copied, and cannot be removed when the new one is in place, keeps a temporary name, which a failure of
/// storage tells then.
void moveItem(fl::filesystem::posix::Item from, fl::filesystem::posix::Item to,
              provider::ReplacementPolicy policy);

/// Copies an item under a temporary name beside the destination and moves it there when it is complete.
void copyItem(fl::filesystem::posix::Item from, fl::filesystem::posix::Item to,
              provider::ReplacementPolicy policy, fl::filesystem::posix::Times times);

/// Returns when all that was written to the file system of an item is on the disk. Throws what it throws.
void syncFileSystemOf(fl::filesystem::posix::Item item);

}  // namespace foundation::storage::portable
