#pragma once

#include <pkgcore/portable/storage/ProviderTypes.hpp>

#include <sys/stat.h>

/// What files of the host are as a store.
namespace foundation::storage::portable {

provider::Traits nativeTraits() noexcept;

/// What a status tells of an item itself.
provider::Item nativeItem(const struct stat& status) noexcept;

/// The bits of chmod that mark an item as writable or not. Only its owner gets the right back: who else had
/// it is not known any more.
mode_t markedMode(mode_t mode, bool isWritable) noexcept;

}  // namespace foundation::storage::portable
