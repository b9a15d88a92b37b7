#pragma once

#include <pkgcore/portable/filesystem/Item.hpp>

#include <string>

namespace fl::filesystem::posix {

/// Removes an item, with everything in it if it is a folder, and follows no link. Goes on after a failure and
/// throws the first one at the end, with the path of the item concerned; `path` is that of the item itself.
void removeTree(Item item, const std::u16string& path);

}  // namespace fl::filesystem::posix
