#include <pkgcore/portable/storage/layer/TreeCopy.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/layer/Content.hpp>
#include <pkgcore/portable/storage/layer/Removal.hpp>
#include <pkgcore/portable/storage/layer/TreeWalk.hpp>

#include <optional>

namespace foundation::storage::portable {

using provider::Item;
using provider::Kind;
using provider::ReplacementPolicy;
using provider::WriteMode;
using vfs::ErrorCode;

namespace {

/// After the content, since a folder that is not writable takes none, and writing changes the time.
void carryMarks(const Item& source, const Spot& to, Carry carry) {
    const bool hasTime = !source.lastModified.is_special() && !to.traits().timeStep.is_special();
    if (carry == Carry::Everything && hasTime && to.traits().setsLastModified) {
        to.setLastModified(source.lastModified);
    }
    if (to.traits().setsWritable && to.find().value_or(source).isWritable != source.isWritable) {
        to.setWritable(source.isWritable);
    }
}

/// As far as it goes: the failure that brought us here is on its way.
void restoreMark(const Spot& spot, const Item& old) noexcept {
    try {
        spot.setWritable(old.isWritable);
    } catch (...) {
        return;
    }
}

void verify(const Spot& from, const Spot& to) {
    if (!haveSameContent(from, to)) {
        throw vfs::Exception(ErrorCode::IOError, "The copy differs from its source", to.iri());
    }
}

/// Puts another content in a file. The mark of the source comes first, since a new content keeps it: then
/// nothing is left to fail when the old content is gone.
void replaceContent(const Spot& from, const Spot& to, const Item& source, const Item& old) {
    const bool changesMark = to.traits().setsWritable && old.isWritable != source.isWritable;
    try {
        if (changesMark) {
            to.setWritable(source.isWritable);
        }
        copyContent(from, to, WriteMode::Create);
    } catch (...) {
        if (changesMark) {
            restoreMark(to, old);
        }
        throw;
    }
}

/// As carryMarks, but a file that was new before goes again where it cannot be marked.
void carryMarksOrRemove(const Item& source, const Spot& to, Carry carry) {
    try {
        carryMarks(source, to, carry);
    } catch (...) {
        removeRemains(to);
        throw;
    }
}

/// Refuses to lose what a move could not take along.
void refuseLinkedFolder(const TreeWalk& walk, Carry carry) {
    if (carry == Carry::Everything) {
        walk.spot().fail(ErrorCode::NotSupported);
    }
}

class TreeCopy {
public:
    TreeCopy(const Spot& from, const Spot& to, Carry carry) : from_(from), target_(to), carry_(carry) {}

    void run() {
        target_.createFolder();
        destination_ = target_.require(Kind::Folder).identity;
        TreeWalk walk(from_);
        for (TreeWalk::Step step = walk.next(); step != TreeWalk::Step::End; step = walk.next()) {
            if (step == TreeWalk::Step::Left) {
                leave(walk);
            } else if (walk.item().kind == Kind::File) {
                copyOneFile(walk.spot(), target_.child(walk.item().name), ReplacementPolicy::FailIfExists,
                            carry_);
            } else if (walk.item().isLink) {
                refuseLinkedFolder(walk, carry_);
            } else {
                enter(walk);
            }
        }
        carryMarks(from_.require(Kind::Folder), target_, carry_);
    }

private:
    void enter(TreeWalk& walk) {
        refuseDestination(walk.spot());
        target_ = target_.child(walk.item().name);
        target_.createFolder();
        walk.enter();
    }

    void leave(const TreeWalk& walk) {
        carryMarks(walk.spot().require(Kind::Folder), target_, carry_);
        target_ = target_.parent();
    }

    // Two stores may show one place, by ways that do not tell; a copy that finds itself would never end.
    void refuseDestination(const Spot& folder) const {
        if (destination_ && folder.require(Kind::Folder).identity == destination_) {
            folder.fail(ErrorCode::NotSupported);
        }
    }

    const Spot& from_;
    Spot target_;
    Carry carry_;
    std::optional<provider::Identity> destination_;
};

}  // namespace

void copyOneFile(const Spot& from, const Spot& to, ReplacementPolicy policy, Carry carry) {
    const Item source = from.require(Kind::File);
    if (source.isDevice) {
        from.fail(ErrorCode::NotSupported);  // reading it might wait for ever
    }
    const bool replaces = policy == ReplacementPolicy::ReplaceExisting;
    const std::optional<Item> old = replaces ? to.find() : std::nullopt;
    if (old) {
        replaceContent(from, to, source, *old);
    } else {
        copyContent(from, to, replaces ? WriteMode::Create : WriteMode::CreateNew);
    }
    old ? carryMarks(source, to, carry) : carryMarksOrRemove(source, to, carry);
    if (carry == Carry::Everything) {
        verify(from, to);  // what differs may be somebody else's by now, and stays
    }
}

void copyTree(const Spot& from, const Spot& to, Carry carry) { TreeCopy(from, to, carry).run(); }

}  // namespace foundation::storage::portable
