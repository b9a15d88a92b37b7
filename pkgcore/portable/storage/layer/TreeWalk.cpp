#include <pkgcore/portable/storage/layer/TreeWalk.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>

namespace foundation::storage::portable {

TreeWalk::TreeWalk(Spot root) { levels_.push_back(open(std::move(root))); }

TreeWalk::Level TreeWalk::open(Spot folder) {
    std::unique_ptr<provider::Lister> lister = folder.list();
    return Level{std::move(folder), std::move(lister), {}};
}

void TreeWalk::enter() { levels_.push_back(open(spot())); }

void TreeWalk::enterIfThere() {
    try {
        enter();
    } catch (const vfs::Exception& failure) {
        if (failure.getErrorCode() != vfs::ErrorCode::NotFound) {
            throw;
        }
    }
}

TreeWalk::Step TreeWalk::next() {
    Level& level = levels_.back();
    if (!level.page.empty()) {
        ++level.at;
    }
    if (level.at == level.page.size()) {
        level.page = level.folder.located([&level] { return level.lister->next(); });
        level.at = 0;
    }
    if (!level.page.empty()) {
        return Step::Entry;
    }
    if (levels_.size() == 1) {
        return Step::End;
    }
    levels_.pop_back();
    return Step::Left;
}

}  // namespace foundation::storage::portable
