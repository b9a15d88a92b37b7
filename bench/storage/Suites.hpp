#pragma once

#include "bench/support/Suite.hpp"

namespace bench {

/// One path at a time, and streams.
void measureStorageFiles(Session& session);

/// Listings of trees, copies of folders, and folders with many entries.
void measureStorageFolders(Session& session);

}  // namespace bench
