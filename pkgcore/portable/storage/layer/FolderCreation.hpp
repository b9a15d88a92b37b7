#pragma once

#include <pkgcore/portable/storage/layer/Spot.hpp>

namespace foundation::storage::portable {

/// Makes a folder and all that are missing above it. Those that exist, or come to exist meanwhile, are fine.
void createFolders(const Spot& folder);

}  // namespace foundation::storage::portable
