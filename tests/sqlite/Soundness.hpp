#pragma once

#include "tests/support/storage/StoreFile.hpp"

#include <string>
#include <vector>

namespace test {

/// Looks with SQLite alone into a store that nobody has open: what its database says of itself, and that
/// nothing is in it that no entry leads to, and nothing beside it.
void expectSound(const StoreFile& file);

/// With everything that a killed or failing process may have left beside it.
void removeStore(const StoreFile& file);

std::vector<std::string> filesBeside(const StoreFile& file);

/// Sanitizers take time and memory.
inline constexpr bool kIsSanitized = PKGCORE_SANITIZED;

/// What the environment says, or else `usual`: how much of a test is wanted.
unsigned amountOf(const char* variable, unsigned usual);

}  // namespace test
