#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

#include <memory>

namespace foundation::storage::provider {

/// A store in memory, empty at first; it goes with the last handle to a storage system that it is mounted in,
/// and with what is still open in it. Each authority is a tree of its own. Folders of any size, files up to
/// what memory holds; copying a file shares its content, and moving a folder takes no longer than moving a
/// file.
PKGCORE_PLATFORM_API std::shared_ptr<Provider> makeMemoryProvider();

}  // namespace foundation::storage::provider
