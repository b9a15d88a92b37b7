#include <pkgcore/portable/storage/providers/memory/MemoryChildren.hpp>

#include <utility>

namespace foundation::storage::portable {

const MemoryChildren::Ordered& MemoryChildren::ordered() const noexcept {
    static const Ordered kNone;
    return entries_ ? entries_->ordered : kNone;
}

const SharedNode* MemoryChildren::find(std::u16string_view name) const {
    if (!entries_) {
        return nullptr;
    }
    const auto known = entries_->byName.find(name);
    return known == entries_->byName.end() ? nullptr : &known->second->second;
}

void MemoryChildren::put(std::u16string_view name, SharedNode node) {
    if (!entries_) {
        entries_ = std::make_unique<Entries>();
    }
    auto& [ordered, byName] = *entries_;
    if (const auto known = byName.find(name); known != byName.end()) {
        known->second->second = std::move(node);
        return;
    }
    const auto entry = ordered.emplace(name, std::move(node)).first;
    try {
        byName.emplace(entry->first, entry);
    } catch (...) {
        ordered.erase(entry);
        throw;
    }
}

SharedNode MemoryChildren::take(Names::iterator known) noexcept {
    const Ordered::iterator entry = known->second;
    entries_->byName.erase(known);
    SharedNode node = std::move(entry->second);
    entries_->ordered.erase(entry);
    return node;
}

SharedNode MemoryChildren::take(std::u16string_view name) noexcept {
    return take(entries_->byName.find(name));
}

SharedNode MemoryChildren::takeAny() noexcept { return take(entries_->byName.begin()); }

}  // namespace foundation::storage::portable
