#pragma once

#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/portable/storage/layer/Spot.hpp>

namespace foundation::storage::portable {

void removeFile(const Spot& file);
void removeFolder(const Spot& folder, vfs::FolderRemovalPolicy policy);

/// Removes a file or a folder with everything in it, whichever is there.
void removeEntry(const Spot& spot);

/// What is left behind by a failure goes away; a failure of that is not news any more.
void removeRemains(const Spot& spot) noexcept;

}  // namespace foundation::storage::portable
