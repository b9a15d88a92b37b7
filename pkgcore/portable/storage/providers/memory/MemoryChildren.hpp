#pragma once

#include <pkgcore/portable/storage/providers/memory/MemoryNames.hpp>

#include <memory>
#include <string_view>

namespace foundation::storage::portable {

/// The entries of a folder in memory: in the order of the UTF-16 units of their names, and by the hash of a
/// name, since a folder is asked for single names far more often than it is listed. Without entries, as in
/// all files, it is a null pointer.
class MemoryChildren {
public:
    using Iterator = MemoryEntries::const_iterator;

    bool empty() const noexcept { return !entries_ || entries_->ordered.empty(); }
    std::size_t size() const noexcept { return ordered().size(); }
    Iterator begin() const noexcept { return ordered().begin(); }
    Iterator end() const noexcept { return ordered().end(); }

    /// The first entry behind a name.
    Iterator behind(std::u16string_view name) const { return ordered().upper_bound(name); }

    /// Before all of them, which are not many, are gone through.
    void preload() const noexcept;

    /// Null where there is none. Stays valid until the entry is changed.
    const SharedNode* find(std::u16string_view name) const noexcept;

    /// Adds an entry, or gives another node to the one of this name.
    void put(std::u16string_view name, SharedNode node);

    /// Removes an entry, which is there. Takes no memory.
    SharedNode take(std::u16string_view name) noexcept;

    /// The same for any one entry, of which there is one at least.
    SharedNode takeAny() noexcept;

private:
    struct Entries {
        MemoryEntries ordered;
        MemoryNames byName;
    };

    const MemoryEntries& ordered() const noexcept;
    SharedNode take(MemoryEntries::iterator entry) noexcept;

    std::unique_ptr<Entries> entries_;
};

}  // namespace foundation::storage::portable
