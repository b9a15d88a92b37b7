#pragma once

#include <pkgcore/portable/storage/Provider.hpp>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace test {

/// What a path of a store leads to.
struct Thing {
    bool isFolder = false;
    bool isWritable = true;
    std::optional<std::int64_t> modified;  ///< microseconds since 1970; none where any time is right
    std::shared_ptr<const std::string> bytes;
};

/// Everything in a store but its root, by path.
using Tree = std::map<std::u16string, Thing>;

/// Lists and reads all of it, with find() agreeing.
Tree contentsOf(foundation::storage::provider::Provider& store);

/// Where they differ first, in words; empty if they do not.
std::string difference(const Tree& expected, const Tree& actual);

/// Bytes that are the same for the same seed.
std::string patternOf(std::uint64_t seed, std::size_t size);

std::string utf8(const std::u16string& path);

}  // namespace test
