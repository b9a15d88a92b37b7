#pragma once

#include <pkgcore/portable/storage/layer/Spot.hpp>

/// The end of a move that was made by copying.
namespace foundation::storage::portable {

/// Removes what was moved, after a last look: what somebody has added or written since it was copied is not
/// removed. TemporarilyBusy then, and both places stay as they are. A folder loses its name first, where the
/// store can do that: a rest under the name, moved again with replacement, would take the place of the whole.
/// @param copied what the source was before it was copied
void removeCopied(const Spot& source, const provider::Item& copied, const Spot& copy);

}  // namespace foundation::storage::portable
