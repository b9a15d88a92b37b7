#pragma once

#include <pkgcore/portable/filesystem/Item.hpp>

namespace fl::filesystem::posix {

/// Sets the last-write time of an item itself: 0 or the error number. A time that the file system would keep
/// as another one, beyond the steps in which it keeps times, is EINVAL; the old one is in place again then.
int setModifiedTime(Item item, const timespec& time) noexcept;

}  // namespace fl::filesystem::posix
