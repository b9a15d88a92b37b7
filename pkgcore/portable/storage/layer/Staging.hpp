#pragma once

#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/portable/storage/layer/Spot.hpp>

#include <functional>

namespace foundation::storage::portable {

inline bool movesNatively(const provider::Traits& traits, provider::Kind kind) noexcept {
    return kind == provider::Kind::File ? traits.movesFiles : traits.movesFolders;
}

/// A place beside another one, at which nobody is likely to have anything.
Spot temporarySibling(const Spot& spot);

/// Makes something at a place by a call that is told where, and what to do about something there.
using Making = std::function<void(const Spot& target, provider::ReplacementPolicy policy)>;

/// Puts something new in a place so that a failure leaves the old one: it is made under a temporary name
/// beside it and moved there when it is complete. Where the store cannot move it is made in place; a file is
/// still replaced in one step then, but an old folder is removed first, and of a new one there is what was
/// made by the time of the failure.
void place(const Spot& to, provider::Kind kind, provider::ReplacementPolicy policy, const Making& make);

}  // namespace foundation::storage::portable
