#pragma once

#include <chrono>
#include <string>

namespace foundation::storage::sqlite {

/// Makes a store at a path where nothing is; false if something is there by then. All of it appears in one
/// step. "Damaged" where the journal of a store that has gone is in the way; it is left there. The store
/// stays where its name cannot be brought to the disk.
bool createStore(const std::string& path, std::chrono::milliseconds busyTime);

}  // namespace foundation::storage::sqlite
