#pragma once

#include <pkgcore/portable/filesystem/Item.hpp>

#include <string>

namespace fl::filesystem::posix {

/// Whose a tree is: anybody's, or one that we have just made ourselves and whose folders may be opened up in
/// order to empty them, whatever permissions they were given.
enum class Ownership { foreign, ours };

/// Removes an item, with everything in it if it is a folder, and follows no link. Goes on after a failure and
/// throws the first one at the end, with the path of the item concerned; `path` is that of the item itself.
void removeTree(Item item, const std::u16string& path, Ownership ownership = Ownership::foreign);

}  // namespace fl::filesystem::posix
