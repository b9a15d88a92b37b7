#pragma once

#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/portable/storage/layer/Spot.hpp>

/// Copying and moving, by the store itself where it can and otherwise by reading and writing. What the two
/// places are is checked before anything changes.
namespace foundation::storage::portable {

void copyEntry(const Spot& from, const Spot& to, provider::Kind kind, provider::ReplacementPolicy policy);
void moveEntry(const Spot& from, const Spot& to, provider::Kind kind, provider::ReplacementPolicy policy);

}  // namespace foundation::storage::portable
