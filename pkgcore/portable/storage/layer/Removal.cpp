#include <pkgcore/portable/storage/layer/Removal.hpp>

#include <pkgcore/portable/storage/layer/TreeWalk.hpp>

#include <exception>

namespace foundation::storage::portable {

using provider::Item;
using provider::Kind;
using vfs::ErrorCode;

namespace {

/// Keeps the first failure of many attempts.
class Attempts {
public:
    template <typename Call>
    void attempt(Call call) {
        try {
            call();
        } catch (...) {
            if (!first_) first_ = std::current_exception();
        }
    }
    void throwFirst() const {
        if (first_) std::rethrow_exception(first_);
    }

private:
    std::exception_ptr first_;
};

/// Goes on after a failure, so that as much as possible is gone.
void removeContents(const Spot& folder) {
    Attempts attempts;
    TreeWalk walk(folder);
    for (TreeWalk::Step step = walk.next(); step != TreeWalk::Step::End; step = walk.next()) {
        const bool isTree = walk.item().kind == Kind::Folder && !walk.item().isLink;
        if (step == TreeWalk::Step::Entry && isTree) {
            attempts.attempt([&walk] { walk.enter(); });
        } else {
            attempts.attempt([&walk] { walk.spot().remove(); });
        }
    }
    attempts.throwFirst();
}

void removeTree(const Spot& folder) {
    if (folder.traits().removesTrees) {
        folder.removeTree();
    } else {
        removeContents(folder);
        folder.remove();
    }
}

void requireRemovable(const Spot& spot) {
    if (spot.path().isRoot() || !spot.traits().removes) {
        spot.fail(ErrorCode::NotSupported);
    }
}

}  // namespace

void removeFile(const Spot& file) {
    file.require(Kind::File);
    requireRemovable(file);
    file.remove();
}

void removeFolder(const Spot& folder, vfs::FolderRemovalPolicy policy) {
    const Item item = folder.require(Kind::Folder);
    requireRemovable(folder);
    if (policy == vfs::FolderRemovalPolicy::WithContents && !item.isLink) {
        removeTree(folder);
    } else {
        folder.remove();
    }
}

void removeEntry(const Spot& spot) {
    const std::optional<Item> found = spot.find();
    if (found && found->kind == Kind::Folder) {
        removeFolder(spot, vfs::FolderRemovalPolicy::WithContents);
    } else if (found) {
        removeFile(spot);
    }
}

void removeRemains(const Spot& spot) noexcept {
    try {
        removeEntry(spot);
    } catch (...) {
        // The failure that brought us here is on its way.
    }
}

}  // namespace foundation::storage::portable
