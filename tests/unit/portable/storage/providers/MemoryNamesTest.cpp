#include <pkgcore/portable/storage/providers/memory/MemoryTree.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using foundation::storage::portable::MemoryEntries;
using foundation::storage::portable::MemoryName;
using foundation::storage::portable::MemoryNames;

/// Names of all lengths, of which many differ in one unit alone.
std::vector<std::u16string> manyNames() {
    std::vector<std::u16string> names;
    for (std::size_t length = 1; length < 30; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            for (const char16_t unit : {u'a', u'b', u'\x8000'}) {
                names.push_back(std::u16string(length, u'n'));
                names.back()[at] = unit;
            }
        }
    }
    return names;
}

/// Entries, and the names by which they are found.
class Named {
public:
    void add(const std::u16string& name) {
        names_.makeRoom();
        names_.add(entries_.emplace(MemoryName(name.begin(), name.end()), nullptr).first);
    }
    void remove(const std::u16string& name) {
        const auto entry = entries_.find(std::u16string_view(name));
        names_.remove(entry);
        entries_.erase(entry);
    }

    void expectFinds(const std::vector<std::u16string>& names) {
        for (const std::u16string& name : names) {
            const MemoryNames::Entry* const found = names_.find(name);
            const auto entry = entries_.find(std::u16string_view(name));
            ASSERT_EQ(found != nullptr, entry != entries_.end()) << testing::PrintToString(name);
            EXPECT_TRUE(found == nullptr || *found == entry);
        }
    }

private:
    MemoryEntries entries_;
    MemoryNames names_;
};

TEST(MemoryNames, FindNothingAtFirst) {
    EXPECT_EQ(MemoryNames().find(u""), nullptr);
    EXPECT_EQ(MemoryNames().find(u"a"), nullptr);
}

TEST(MemoryNames, FindWhatWasAddedAndNothingElse) {
    const std::vector<std::u16string> names = manyNames();
    Named named;
    for (std::size_t i = 0; i < names.size(); i += 2) {
        named.add(names[i]);
    }
    named.expectFinds(names);
}

// In all orders of the places: what stands behind a place that becomes free has to be found from its own.
TEST(MemoryNames, FindWhatIsLeftWhenOthersAreRemoved) {
    constexpr std::size_t kCount = 40;
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        std::vector<std::u16string> names;
        for (std::size_t i = 0; i < kCount; ++i) {
            names.push_back(u"entry" + std::u16string(1, static_cast<char16_t>(random() % 0xFFFF)) +
                            static_cast<char16_t>(i));
        }
        Named named;
        for (const std::u16string& name : names) named.add(name);
        std::shuffle(names.begin(), names.end(), random);
        for (const std::u16string& name : names) {
            named.remove(name);
            named.expectFinds(names);
        }
    }
}

TEST(MemoryNames, FindWhatIsAddedAgainInTheSamePlaces) {
    const std::vector<std::u16string> names = manyNames();
    Named named;
    for (int round = 0; round < 3; ++round) {
        for (const std::u16string& name : names) named.add(name);
        named.expectFinds(names);
        for (const std::u16string& name : names) named.remove(name);
        named.expectFinds(names);
    }
}

}  // namespace
