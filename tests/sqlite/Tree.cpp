#include "tests/sqlite/Tree.hpp"

#include "tests/support/storage/ProviderCalls.hpp"

#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/locale/encoding_utf.hpp>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace test {

namespace provider = foundation::storage::provider;
using provider::Path;

namespace {

std::int64_t microseconds(const boost::posix_time::ptime& time) {
    const boost::posix_time::ptime epoch(boost::gregorian::date(1970, 1, 1));
    return (time - epoch).total_microseconds();
}

Thing thingAt(provider::Provider& store, const Path& path, provider::Kind listed) {
    const std::optional<provider::Item> item = store.find(path);
    if (!item || item->kind != listed) {
        throw std::runtime_error("listed but not found: " + utf8(path.text()));
    }
    Thing thing;
    thing.isFolder = listed == provider::Kind::Folder;
    thing.isWritable = item->isWritable;
    thing.modified = microseconds(item->lastModified);
    if (!thing.isFolder) {
        thing.bytes = std::make_shared<const std::string>(readFile(store, path.text()));
    }
    return thing;
}

void collect(provider::Provider& store, const Path& folder, Tree& tree) {
    const auto lister = store.list(folder);
    for (auto page = lister->next(); !page.empty(); page = lister->next()) {
        for (const provider::ListItem& item : page) {
            const Path path = folder.child(item.name);
            const Thing thing = thingAt(store, path, item.kind);
            const bool isNew = tree.emplace(path.text(), thing).second;
            if (!isNew) throw std::runtime_error("listed twice: " + utf8(path.text()));
            if (thing.isFolder) collect(store, path, tree);
        }
    }
}

std::string differenceOf(const Thing& expected, const Thing& actual) {
    if (expected.isFolder != actual.isFolder) return "is of the other kind";
    if (expected.isWritable != actual.isWritable) return "has the other mark";
    if (expected.modified && expected.modified != actual.modified) return "has another time";
    if (!expected.isFolder && *expected.bytes != *actual.bytes) {
        return "has other bytes: " + std::to_string(actual.bytes->size()) + ", expected " +
               std::to_string(expected.bytes->size());
    }
    return {};
}

}  // namespace

Tree contentsOf(provider::Provider& store) {
    Tree tree;
    collect(store, Path(), tree);
    return tree;
}

std::string difference(const Tree& expected, const Tree& actual) {
    for (const auto& [path, thing] : actual) {
        if (expected.count(path) == 0) return utf8(path) + " should not be there";
    }
    for (const auto& [path, thing] : expected) {
        const auto found = actual.find(path);
        if (found == actual.end()) return utf8(path) + " is missing";
        const std::string what = differenceOf(thing, found->second);
        if (!what.empty()) return utf8(path) + ' ' + what;
    }
    return {};
}

std::string patternOf(std::uint64_t seed, std::size_t size) {
    std::string bytes(size, '\0');
    std::uint64_t state = seed * 0x9E3779B97F4A7C15U + 1;
    for (std::size_t at = 0; at < size; at += sizeof state) {
        state ^= state << 13U;
        state ^= state >> 7U;
        state ^= state << 17U;
        std::memcpy(bytes.data() + at, &state, std::min(sizeof state, size - at));
    }
    return bytes;
}

std::string utf8(const std::u16string& path) {
    return boost::locale::conv::utf_to_utf<char>(path.data(), path.data() + path.size());
}

}  // namespace test
