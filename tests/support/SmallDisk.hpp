#pragma once

#include <string>

namespace test {

/// Mounts a file system of the given size on an existing folder, seen by this process alone and gone with it:
/// for use in a child. False where the host does not let us.
bool mountSmallDisk(const std::string& folder, const std::string& size);

/// Lets nothing be written any more on what mountSmallDisk has mounted.
bool makeReadOnly(const std::string& folder);

/// Whether mountSmallDisk works here; tried in a child.
bool canMountSmallDisk();

}  // namespace test
