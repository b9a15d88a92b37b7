#pragma once

#include <pkgcore/portable/filesystem/NativePath.hpp>

namespace fl::filesystem::posix {

/// Moves a file, a link or a folder to another file system, where the system's own rename refuses to: copies
/// it, with its times, to a temporary sibling of the destination, renames that into place, and removes the
/// source. Replaces what the system's rename would replace. A failure before the renaming leaves the source
/// whole, the destination as it was, and nothing else; if the source cannot be removed in the end, both are
/// there and that failure is thrown.
void moveToOtherDevice(const Place& source, const Place& target);

}  // namespace fl::filesystem::posix
