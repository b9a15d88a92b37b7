#pragma once

#include <pkgcore/portable/filesystem/FileCopy.hpp>

namespace fl::filesystem::posix {

/// Makes at `to`, where nothing may be, a link with the text of the one at `from`, byte by byte. A failure
/// leaves nothing there.
Outcome copyLink(Item from, Item to, Times times);

}  // namespace fl::filesystem::posix
