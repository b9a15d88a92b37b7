#include <pkgcore/portable/storage/providers/memory/MemoryNames.hpp>

#include <cstring>
#include <utility>

namespace foundation::storage::portable {

namespace {

using Word = std::uint64_t;

constexpr std::size_t kUnitsOfWord = sizeof(Word) / sizeof(char16_t);
constexpr Word kMultiplier = 0x9E3779B97F4A7C15;  // odd, without a pattern in its bits

Word wordAt(const char16_t* units) noexcept {
    Word word = 0;
    std::memcpy(&word, units, sizeof word);
    return word;
}

Word mixed(Word hash, Word word) noexcept { return ((hash << 23 | hash >> 41) ^ word) * kMultiplier; }

bool isSame(std::u16string_view one, std::u16string_view other) noexcept {
    return one.size() == other.size() &&
           std::memcmp(one.data(), other.data(), one.size() * sizeof(char16_t)) == 0;
}

}  // namespace

// By words. The last one goes over units that are done already: that is cheaper than doing the rest one by
// one.
MemoryNames::Hash MemoryNames::hashOf(std::u16string_view name) noexcept {
    Hash hash = name.size();
    if (name.size() < kUnitsOfWord) {
        for (const char16_t unit : name) hash = mixed(hash, unit);
    } else {
        const std::size_t last = name.size() - kUnitsOfWord;
        for (std::size_t i = 0; i < last; i += kUnitsOfWord) hash = mixed(hash, wordAt(name.data() + i));
        hash = mixed(hash, wordAt(name.data() + last));
    }
    return hash | 1;
}

const MemoryNames::Entry* MemoryNames::find(std::u16string_view name) const noexcept {
    if (places_.empty()) {
        return nullptr;
    }
    const Hash hash = hashOf(name);
    for (std::size_t i = at(hash); places_[i].hash != 0; i = behind(i)) {
        const Place& place = places_[i];
        if (place.hash == hash && isSame(textOf(place.entry->first), name)) {
            return &place.entry;
        }
    }
    return nullptr;
}

// The links between the entries stand in front of them. Their nodes are asked for when the entries have come.
void MemoryNames::preload() const noexcept {
    constexpr std::ptrdiff_t kLinks = 32;
    constexpr std::ptrdiff_t kLine = 64;
    for (const Place& place : places_) {
        if (place.hash == 0) {
            continue;
        }
        const auto* const entry = reinterpret_cast<const char*>(&*place.entry);
        __builtin_prefetch(entry - kLinks);
        __builtin_prefetch(entry - kLinks + kLine);
        __builtin_prefetch(entry - kLinks + 2 * kLine);
    }
    for (const Place& place : places_) {
        if (place.hash != 0) __builtin_prefetch(place.entry->second.get());
    }
}

void MemoryNames::makeRoom() {
    if (2 * (count_ + 1) <= places_.size()) {
        return;
    }
    std::vector<Place> old(std::size_t{1} << (kBitsOfHash - (shift_ - 1)));
    places_.swap(old);
    --shift_;
    for (const Place& place : old) {
        if (place.hash != 0) put(place);
    }
}

void MemoryNames::put(const Place& added) noexcept {
    std::size_t i = at(added.hash);
    while (places_[i].hash != 0) {
        i = behind(i);
    }
    places_[i] = added;
}

void MemoryNames::add(Entry entry) noexcept {
    put(Place{hashOf(textOf(entry->first)), entry});
    ++count_;
}

void MemoryNames::remove(Entry entry) noexcept {
    std::size_t i = at(hashOf(textOf(entry->first)));
    while (places_[i].hash == 0 || places_[i].entry != entry) {
        i = behind(i);
    }
    close(i);
    --count_;
}

/// Frees a place. What stands behind it, up to the next free one, moves up if the gap is on its way there.
void MemoryNames::close(std::size_t gap) noexcept {
    for (std::size_t i = behind(gap); places_[i].hash != 0; i = behind(i)) {
        if (distance(at(places_[i].hash), i) >= distance(gap, i)) {
            places_[gap] = places_[i];
            gap = i;
        }
    }
    places_[gap] = Place();
}

}  // namespace foundation::storage::portable
