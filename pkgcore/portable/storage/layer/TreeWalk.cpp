#include <pkgcore/portable/storage/layer/TreeWalk.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>

#include <utility>

namespace foundation::storage::portable {

TreeWalk::TreeWalk(Spot root) { levels_.push_back(open(std::move(root))); }

TreeWalk::Level TreeWalk::open(Spot folder) {
    std::unique_ptr<provider::Lister> lister = folder.list();
    return Level{std::move(folder), std::move(lister), std::exchange(spare_, Page())};
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
    if (level.count > 0) {
        ++level.at;
    }
    if (level.at == level.count) {
        level.count = level.folder.located([&level] { return level.lister->fill(level.page); });
        level.at = 0;
    }
    if (level.count > 0) {
        return Step::Entry;
    }
    if (levels_.size() == 1) {
        return Step::End;
    }
    spare_ = std::move(level.page);
    levels_.pop_back();
    return Step::Left;
}

}  // namespace foundation::storage::portable
