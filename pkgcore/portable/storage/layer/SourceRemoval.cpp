#include <pkgcore/portable/storage/layer/SourceRemoval.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/layer/Removal.hpp>
#include <pkgcore/portable/storage/layer/Staging.hpp>
#include <pkgcore/portable/storage/layer/TreeWalk.hpp>

#include <algorithm>

namespace foundation::storage::portable {

using boost::posix_time::ptime;
using boost::posix_time::time_duration;
using provider::Item;
using provider::Kind;
using provider::ReplacementPolicy;
using vfs::ErrorCode;

namespace {

[[noreturn]] void failChanged(const Spot& source) {
    throw vfs::Exception(ErrorCode::TemporarilyBusy, "The source was changed while it was moved",
                         source.iri());
}

void requireUnchanged(const Spot& source, const Item& copied) {
    const Item now = source.require(copied.kind);
    const bool isWritten = copied.kind == Kind::File && now.lastModified != copied.lastModified;
    if (isWritten || now.identity != copied.identity) {
        failChanged(source);
    }
}

/// As exactly as both stores keep times; where one keeps none, they say nothing.
bool isSameTime(const Item& one, const Item& other, const Spot& copy) {
    const time_duration step = copy.traits().timeStep;
    if (one.lastModified.is_special() || other.lastModified.is_special() || step.is_special() ||
        !copy.traits().setsLastModified) {
        return true;
    }
    const time_duration difference = one.lastModified - other.lastModified;
    return difference == time_duration() || (difference < step && -difference < step);
}

bool isCopied(const Spot& entry, const Spot& copy) {
    const std::optional<Item> source = entry.find();
    const std::optional<Item> there = copy.find();
    return source && there && source->kind == there->kind &&
           (source->kind == Kind::Folder || isSameTime(*source, *there, copy));
}

/// Goes through the source alone: what the copy has besides is in nobody's way.
void requireAllCopied(const Spot& source, const Spot& copy) {
    Spot target = copy;
    TreeWalk walk(source);
    for (TreeWalk::Step step = walk.next(); step != TreeWalk::Step::End; step = walk.next()) {
        if (step == TreeWalk::Step::Left) {
            target = target.parent();
            continue;
        }
        Spot there = target.child(walk.item().name);
        if (!isCopied(walk.spot(), there)) {
            failChanged(source);
        }
        if (walk.item().kind == Kind::Folder && !walk.item().isLink) {
            walk.enter();
            target = std::move(there);
        }
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

/// A failure tells where the folder is then.
void putBack(const Spot& aside, const Spot& folder) {
    aside.located([&] { aside.moveTo(folder, ReplacementPolicy::FailIfExists); });
}

/// Under its name nobody can add to the folder any more who has not opened something in it before.
void removeAside(const Spot& folder, const Spot& copy) {
    const Spot aside = moveAside(folder);
    try {
        requireAllCopied(aside, copy);
    } catch (const vfs::Exception& failure) {
        putBack(aside, folder);
        throw vfs::Exception(failure.getErrorCode(), failure.what(), folder.iri());
    } catch (...) {  // want of memory, or what a store throws
        putBack(aside, folder);
        throw;
    }
    removeEntry(aside);
}

}  // namespace

void removeCopied(const Spot& source, const Item& copied, const Spot& copy) {
    requireUnchanged(source, copied);
    if (copied.kind == Kind::File) {
        removeEntry(source);
    } else if (movesNatively(source.traits(), Kind::Folder)) {
        removeAside(source, copy);
    } else {
        requireAllCopied(source, copy);
        removeEntry(source);
    }
}

}  // namespace foundation::storage::portable
