#pragma once

#include "tests/reference/CivilTime.hpp"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace reference {

/// The moment at which a place sets its clocks.
struct Change {
    Seconds at;  // of UTC
    Seconds before;
    Seconds after;  // seconds ahead of UTC
};

/// What the clocks of a place show, from the list of all changes in order of time.
class WallClock {
public:
    WallClock(Seconds firstOffset, std::vector<Change> changes)
        : firstOffset_(firstOffset), changes_(std::move(changes)), offsets_{firstOffset} {
        for (const Change& change : changes_) offsets_.insert(change.after);
    }

    const std::vector<Change>& changes() const noexcept { return changes_; }

    Seconds offsetAt(Seconds utc) const {
        const auto next =
            std::upper_bound(changes_.begin(), changes_.end(), utc,
                             [](Seconds time, const Change& change) { return time < change.at; });
        return next == changes_.begin() ? firstOffset_ : std::prev(next)->after;
    }

    Seconds localOf(Seconds utc) const { return utc + offsetAt(utc); }

    /// The first instant at which the clocks show `local`; where none does, the one that has this time by the
    /// offset before the change.
    Seconds utcOf(Seconds local) const {
        const std::optional<Seconds> shown = firstShowing(local);
        return shown ? *shown : local - offsetBeforeSkipping(local);
    }

private:
    std::optional<Seconds> firstShowing(Seconds local) const {
        std::optional<Seconds> first;
        for (const Seconds offset : offsets_) {
            const Seconds utc = local - offset;
            if (offsetAt(utc) == offset && (!first || utc < *first)) first = utc;
        }
        return first;
    }

    Seconds offsetBeforeSkipping(Seconds local) const {
        const auto skipping = std::find_if(changes_.begin(), changes_.end(), [local](const Change& change) {
            return change.at + change.before <= local && local < change.at + change.after;
        });
        return skipping->before;
    }

    Seconds firstOffset_;
    std::vector<Change> changes_;
    std::set<Seconds> offsets_;
};

}  // namespace reference
