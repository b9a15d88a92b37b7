#pragma once

#include <pkgcore/portable/storage/layer/Spot.hpp>

/// Places that are one in truth, or lie within each other, in one store or across two that show the same
/// items.
namespace foundation::storage::portable {

/// Whether two places hold one item. Never so of a link, which is a second name and can go by itself.
bool isOneItem(const Spot& one, const Spot& other);

/// NotSupported, at `to`, for something at or below itself, and for something onto what holds it, which would
/// be gone by then. Links on the way can hide that a folder lies in another one.
void refuseOverlap(const Spot& from, const Spot& to);

}  // namespace foundation::storage::portable
