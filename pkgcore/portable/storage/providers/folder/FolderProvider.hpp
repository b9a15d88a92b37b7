#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

#include <memory>
#include <string>

namespace foundation::storage::provider {

/// A folder of this machine as a store of its own, from which nothing leads out: no "..", no link, absolute
/// or not, and no link that is put in the place of a folder during a call. Links are never followed: one is
/// shown as a file, which can be copied within the store, moved and removed, but neither read nor written.
///
/// The folder is held open from now on, so that the store stays with it when it is renamed. It must exist:
/// foundation::storage::vfs::Exception otherwise.
PKGCORE_PLATFORM_API std::shared_ptr<Provider> makeFolderProvider(const std::u16string& folder);

}  // namespace foundation::storage::provider
