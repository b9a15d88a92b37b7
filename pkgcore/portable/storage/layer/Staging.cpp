#include <pkgcore/portable/storage/layer/Staging.hpp>

#include <pkgcore/portable/filesystem/RandomName.hpp>
#include <pkgcore/portable/storage/layer/Removal.hpp>

namespace foundation::storage::portable {

using provider::Kind;
using provider::ReplacementPolicy;

namespace {

// Nothing of the item's own name: that may be as long as a name can be.
Spot temporarySibling(const Spot& spot) {
    std::u16string name = u".";
    fl::filesystem::posix::appendRandomName(name);
    name += u".tmp";
    return spot.parent().child(name);
}

/// Goes away with what is in it unless it was moved.
class Stage {
public:
    explicit Stage(const Spot& to) : spot_(temporarySibling(to)) {}
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage() {
        if (!moved_) {
            removeRemains(spot_);
        }
    }

    const Spot& spot() const noexcept { return spot_; }

    void moveTo(const Spot& to, ReplacementPolicy policy) {
        spot_.moveTo(to, policy);
        moved_ = true;
    }

private:
    Spot spot_;
    bool moved_ = false;
};

}  // namespace

void place(const Spot& to, Kind kind, ReplacementPolicy policy, const Making& make) {
    if (movesNatively(to.traits(), kind)) {
        Stage stage(to);
        make(stage.spot(), ReplacementPolicy::FailIfExists);
        stage.moveTo(to, policy);
        return;
    }
    if (kind == Kind::Folder && policy == ReplacementPolicy::ReplaceExisting) {
        removeEntry(to);
    }
    make(to, policy);
}

}  // namespace foundation::storage::portable
