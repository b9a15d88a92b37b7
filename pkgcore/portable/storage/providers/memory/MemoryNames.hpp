#pragma once

#include <boost/container/small_vector.hpp>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

namespace foundation::storage::portable {

struct MemoryNode;
using SharedNode = std::shared_ptr<MemoryNode>;

/// A name where its entry is, unless it is long: a listing of many waits for memory, not for the processor.
using MemoryName = boost::container::small_vector<char16_t, 16>;

inline std::u16string_view textOf(const MemoryName& name) noexcept { return {name.data(), name.size()}; }
inline std::u16string_view textOf(std::u16string_view name) noexcept { return name; }

struct MemoryNameOrder {
    using is_transparent = void;

    template <typename One, typename Other>
    bool operator()(const One& one, const Other& other) const noexcept {
        return textOf(one) < textOf(other);
    }
};

/// The entries of a folder in the order of the UTF-16 units of their names.
using MemoryEntries = std::map<MemoryName, SharedNode, MemoryNameOrder>;

/// Finds the entries of a folder by the hashes of their names: one array, in which an entry stands at the
/// place of its hash or behind it, with no free place between.
class MemoryNames {
public:
    using Entry = MemoryEntries::iterator;

    /// Null where there is none. Stays valid until entries are added or removed.
    const Entry* find(std::u16string_view name) const noexcept;

    /// Has the processor load all entries and their nodes, side by side: whoever goes through them in order
    /// waits for one after the other. For no more of them than it can hold.
    void preload() const noexcept;

    /// Takes the memory for one entry more.
    void makeRoom();

    /// Adds an entry whose name is not there; there is room.
    void add(Entry entry) noexcept;

    /// Removes an entry, which is there.
    void remove(Entry entry) noexcept;

private:
    using Hash = std::uint64_t;

    static constexpr unsigned kBitsOfHash = 64;
    static constexpr unsigned kFewestBits = 3;  // of an index

    struct Place {
        Hash hash = 0;  ///< 0 where it is free, which no hash is
        Entry entry{};
    };

    static Hash hashOf(std::u16string_view name) noexcept;
    /// By the upper bits, where all bits of the name have arrived.
    std::size_t at(Hash hash) const noexcept { return static_cast<std::size_t>(hash >> shift_); }
    std::size_t behind(std::size_t index) const noexcept { return (index + 1) & (places_.size() - 1); }
    std::size_t distance(std::size_t from, std::size_t to) const noexcept {
        return (to - from) & (places_.size() - 1);
    }
    void put(const Place& added) noexcept;
    void close(std::size_t gap) noexcept;

    std::vector<Place> places_;  ///< none, or a power of two of them, half of which are free
    unsigned shift_ = kBitsOfHash - kFewestBits + 1;
    std::size_t count_ = 0;
};

}  // namespace foundation::storage::portable
