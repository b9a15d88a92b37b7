#include <pkgcore/portable/storage/layer/TreeWalk.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/i18n/AsciiRun.hpp>

#include <algorithm>
#include <string_view>
#include <utility>

namespace foundation::storage::portable {

namespace {

bool holds(std::u16string_view name, char16_t unit) noexcept {
    return fl::i18n::portable::findUnit(name.data(), name.size(), unit) != name.size();
}

bool areDots(std::u16string_view name) noexcept {
    return name.size() <= 2 && name.find_first_not_of(u'.') == std::u16string_view::npos;
}

bool isName(std::u16string_view name) noexcept {
    return !areDots(name) && !holds(name, u'/') && !holds(name, u'\0');
}

/// A name that leads elsewhere must not take a copy, or a removal, out of its folder.
void requireNames(const Spot& folder, const std::vector<provider::ListItem>& page, std::size_t count) {
    const bool areNames = std::all_of(page.begin(), page.begin() + static_cast<std::ptrdiff_t>(count),
                                      [](const provider::ListItem& item) { return isName(item.name); });
    if (!areNames) {
        throw vfs::Exception(vfs::ErrorCode::NotRecoverable, "The store lists what is no name", folder.iri());
    }
}

}  // namespace

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

/// Nothing is shown where that fails. A store that counts more entries than it has given is not believed.
void TreeWalk::refill(Level& level) {
    level.at = level.count = 0;
    const std::size_t filled = level.folder.located([&level] { return level.lister->fill(level.page); });
    const std::size_t count = std::min(filled, level.page.size());
    requireNames(level.folder, level.page, count);
    level.count = count;
}

TreeWalk::Step TreeWalk::next() {
    Level& level = levels_.back();
    if (level.count > 0) {
        ++level.at;
    }
    if (level.at == level.count) {
        refill(level);
    }
    return level.count > 0 ? Step::Entry : leave();
}

TreeWalk::Step TreeWalk::leave() {
    if (levels_.size() == 1) {
        return Step::End;
    }
    spare_ = std::move(levels_.back().page);
    levels_.pop_back();
    return Step::Left;
}

}  // namespace foundation::storage::portable
