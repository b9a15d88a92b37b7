#include <pkgcore/portable/storage/layer/Transfer.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/layer/Overlap.hpp>
#include <pkgcore/portable/storage/layer/SourceRemoval.hpp>
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
    removeCopied(from, source, to);
}

}  // namespace foundation::storage::portable
