#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace foundation::storage::portable {

struct MemoryNode;
using SharedNode = std::shared_ptr<MemoryNode>;

/// The entries of a folder in memory: in the order of the UTF-16 units of their names, and by the hash of a
/// name, since a folder is asked for single names far more often than it is listed. Without entries, as in
/// all files, it is a null pointer.
class MemoryChildren {
    using Ordered = std::map<std::u16string, SharedNode, std::less<>>;

public:
    using Iterator = Ordered::const_iterator;

    bool empty() const noexcept { return !entries_ || entries_->ordered.empty(); }
    std::size_t size() const noexcept { return ordered().size(); }
    Iterator begin() const noexcept { return ordered().begin(); }
    Iterator end() const noexcept { return ordered().end(); }

    /// The first entry behind a name.
    Iterator behind(std::u16string_view name) const { return ordered().upper_bound(name); }

    /// Null where there is none. Stays valid until the entry is changed.
    const SharedNode* find(std::u16string_view name) const;

    /// Adds an entry, or gives another node to the one of this name.
    void put(std::u16string_view name, SharedNode node);

    /// Removes an entry, which is there. Takes no memory.
    SharedNode take(std::u16string_view name) noexcept;

    /// The same for any one entry, of which there is one at least.
    SharedNode takeAny() noexcept;

private:
    using Names = std::unordered_map<std::u16string_view, Ordered::iterator>;

    struct Entries {
        Ordered ordered;
        Names byName;  ///< the names are those in the map
    };

    const Ordered& ordered() const noexcept;
    SharedNode take(Names::iterator known) noexcept;

    std::unique_ptr<Entries> entries_;
};

}  // namespace foundation::storage::portable
