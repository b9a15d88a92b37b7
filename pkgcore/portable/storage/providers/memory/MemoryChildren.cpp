#include <pkgcore/portable/storage/providers/memory/MemoryChildren.hpp>

#include <utility>

namespace foundation::storage::portable {

const MemoryEntries& MemoryChildren::ordered() const noexcept {
    static const MemoryEntries kNone;
    return entries_ ? entries_->ordered : kNone;
}

const SharedNode* MemoryChildren::find(std::u16string_view name) const noexcept {
    const MemoryNames::Entry* const known = entries_ ? entries_->byName.find(name) : nullptr;
    return known == nullptr ? nullptr : &(*known)->second;
}

void MemoryChildren::preload() const noexcept {
    if (entries_) {
        entries_->byName.preload();
    }
}

void MemoryChildren::put(std::u16string_view name, SharedNode node) {
    if (!entries_) {
        entries_ = std::make_unique<Entries>();
    }
    auto& [ordered, byName] = *entries_;
    if (const MemoryNames::Entry* const known = byName.find(name)) {
        (*known)->second = std::move(node);
        return;
    }
    byName.makeRoom();
    byName.add(ordered.emplace(MemoryName(name.begin(), name.end()), std::move(node)).first);
}

SharedNode MemoryChildren::take(MemoryEntries::iterator entry) noexcept {
    entries_->byName.remove(entry);
    SharedNode node = std::move(entry->second);
    entries_->ordered.erase(entry);
    return node;
}

SharedNode MemoryChildren::take(std::u16string_view name) noexcept {
    return take(*entries_->byName.find(name));
}

SharedNode MemoryChildren::takeAny() noexcept { return take(entries_->ordered.begin()); }

}  // namespace foundation::storage::portable
