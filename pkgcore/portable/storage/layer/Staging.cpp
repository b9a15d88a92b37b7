#include <pkgcore/portable/storage/layer/Staging.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/filesystem/RandomName.hpp>
#include <pkgcore/portable/storage/layer/Removal.hpp>

namespace foundation::storage::portable {

using provider::Kind;
using provider::ReplacementPolicy;

Spot temporarySibling(const Spot& spot) {
    return spot.parent().child(fl::filesystem::posix::temporaryName());
}

namespace {

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

/// From within a handler. A failure at the temporary place, or below it, is one at the place that was asked
/// for.
[[noreturn]] void rethrowAt(const Spot& to, const Spot& stage, const vfs::Exception& failure) {
    const std::u16string& location = failure.getLocation().toString();
    const std::u16string& temporary = stage.iri().toString();
    if (location.compare(0, temporary.size(), temporary) != 0) {
        throw;
    }
    std::u16string meant = to.iri().toString() + location.substr(temporary.size());
    throw vfs::Exception(failure.getErrorCode(), failure.what(),
                         vfs::AbsoluteIRI(vfs::CheckedIRI{std::move(meant)}));
}

void makeAndMove(const Spot& to, ReplacementPolicy policy, const Making& make) {
    Stage stage(to);
    try {
        make(stage.spot(), ReplacementPolicy::FailIfExists);
    } catch (const vfs::Exception& failure) {
        rethrowAt(to, stage.spot(), failure);
    }
    stage.moveTo(to, policy);
}

}  // namespace

void place(const Spot& to, Kind kind, ReplacementPolicy policy, const Making& make) {
    if (movesNatively(to.traits(), kind)) {
        makeAndMove(to, policy, make);
        return;
    }
    if (kind == Kind::Folder && policy == ReplacementPolicy::ReplaceExisting) {
        removeEntry(to);
    }
    make(to, policy);
}

}  // namespace foundation::storage::portable
