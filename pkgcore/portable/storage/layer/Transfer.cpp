#include <pkgcore/portable/storage/layer/Transfer.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/layer/Overlap.hpp>
#include <pkgcore/portable/storage/layer/Removal.hpp>
#include <pkgcore/portable/storage/layer/Staging.hpp>
#include <pkgcore/portable/storage/layer/TreeCopy.hpp>

namespace foundation::storage::portable {

using provider::Item;
using provider::Kind;
using provider::ReplacementPolicy;
using vfs::ErrorCode;

namespace {

void checkDestination(const Spot& to, Kind kind, ReplacementPolicy policy) {
    const std::optional<Item> found = to.find();
    if (found && (found->kind != kind || policy == ReplacementPolicy::FailIfExists)) {
        to.fail(ErrorCode::AlreadyExists);
    }
    if (to.path().isRoot()) {
        to.fail(ErrorCode::NotSupported);
    }
}

void requireWritableStore(const Spot& to, Kind kind) {
    if (!to.traits().writes || (kind == Kind::Folder && !to.traits().createsFolders)) {
        to.fail(ErrorCode::NotSupported);
    }
}

bool copiesItself(const Spot& from, const Spot& to, Kind kind) {
    const provider::Traits& traits = from.traits();
    return from.isInStoreOf(to) && (kind == Kind::File ? traits.copiesFiles : traits.copiesFolders);
}

bool movesItself(const Spot& from, const Spot& to, Kind kind) {
    return from.isInStoreOf(to) && movesNatively(from.traits(), kind);
}

void copyByHand(const Spot& from, const Spot& to, Kind kind, ReplacementPolicy policy, Carry carry) {
    requireWritableStore(to, kind);
    place(to, kind, policy, [&](const Spot& target, ReplacementPolicy targetPolicy) {
        if (kind == Kind::File) {
            copyOneFile(from, target, targetPolicy, carry);
        } else {
            copyTree(from, target, carry);
        }
    });
}

/// What is removed must be what was copied.
void requireUnchanged(const Spot& from, const Item& copied) {
    const Item now = from.require(copied.kind);
    const bool isWritten = copied.kind == Kind::File && now.lastModified != copied.lastModified;
    if (isWritten || now.identity != copied.identity) {
        throw vfs::Exception(ErrorCode::TemporarilyBusy, "The source was changed while it was moved",
                             from.iri());
    }
}

/// Takes its name from a folder in one step; a failure is one at the folder.
Spot moveAside(const Spot& folder) {
    Spot aside = temporarySibling(folder);
    try {
        folder.moveTo(aside, ReplacementPolicy::FailIfExists);
    } catch (const vfs::Exception& failure) {
        throw vfs::Exception(failure.getErrorCode(), failure.what(), folder.iri());
    }
    return aside;
}

/// Removes what was moved by copying. A folder loses its name first, where the store can do that: a rest
/// under the name, moved again with replacement, would take the place of the whole.
void removeSource(const Spot& from, Kind kind) {
    const bool hasSteps = kind == Kind::Folder && movesNatively(from.traits(), kind);
    removeEntry(hasSteps ? moveAside(from) : from);
}

}  // namespace

void copyEntry(const Spot& from, const Spot& to, Kind kind, ReplacementPolicy policy) {
    from.require(kind);
    refuseOverlap(from, to);
    checkDestination(to, kind, policy);
    if (copiesItself(from, to, kind)) {
        from.copyTo(to, policy);
    } else {
        copyByHand(from, to, kind, policy, Carry::Writability);
    }
}

void moveEntry(const Spot& from, const Spot& to, Kind kind, ReplacementPolicy policy) {
    const Item source = from.require(kind);
    if (isOneItem(from, to)) {
        return;
    }
    if (from.path().isRoot()) {
        from.fail(ErrorCode::NotSupported);
    }
    refuseOverlap(from, to);
    checkDestination(to, kind, policy);
    if (movesItself(from, to, kind)) {
        from.moveTo(to, policy);
        return;
    }
    if (!from.traits().removes) {
        from.fail(ErrorCode::NotSupported);
    }
    copyByHand(from, to, kind, policy, Carry::Everything);
    to.sync();
    requireUnchanged(from, source);
    removeSource(from, kind);
}

}  // namespace foundation::storage::portable
