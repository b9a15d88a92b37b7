#include <pkgcore/portable/storage/layer/Overlap.hpp>

namespace foundation::storage::portable {

using provider::Identity;
using provider::Item;

namespace {

/// Of what a place leads to.
std::optional<Identity> identityAt(const Spot& spot) {
    const std::optional<Item> found = spot.find();
    return found ? found->identity : std::nullopt;
}

/// Whether the item is at the place or on the way to it from the root of its store.
bool isOnTheWay(const Identity& item, Spot spot) {
    while (identityAt(spot) != item) {
        if (spot.path().isRoot()) {
            return false;
        }
        spot = spot.parent();
    }
    return true;
}

bool isWithin(const Spot& spot, const Spot& other) {
    const std::optional<Identity> item = identityAt(other);
    return item && isOnTheWay(*item, spot);
}

bool overlaps(const Spot& one, const Spot& other) {
    if (one.isInStoreOf(other)) {
        return one.isAtOrBelow(other) || other.isAtOrBelow(one);
    }
    return isWithin(one, other) || isWithin(other, one);
}

}  // namespace

bool isOneItem(const Spot& one, const Spot& other) {
    if (one.isInStoreOf(other)) {
        return one.isSameAs(other);
    }
    const std::optional<Item> first = one.find();
    const std::optional<Item> second = other.find();
    return first && second && !first->isLink && !second->isLink && first->identity &&
           first->identity == second->identity;
}

void refuseOverlap(const Spot& from, const Spot& to) {
    if (overlaps(to, from)) {
        to.fail(vfs::ErrorCode::NotSupported);
    }
}

}  // namespace foundation::storage::portable
