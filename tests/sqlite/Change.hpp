#pragma once

#include "tests/sqlite/Tree.hpp"

#include <random>
#include <vector>

namespace test {

/// One call that changes a store.
struct Change {
    enum class Verb : unsigned char {
        Write,
        WriteNew,
        Append,
        CreateFolder,
        Remove,
        RemoveTree,
        Move,
        Copy,
        SetWritable,
        SetTime
    };

    Verb verb = Verb::Write;
    std::u16string path;
    std::u16string to;       ///< of Move and Copy, which replace
    std::size_t size = 0;    ///< of what is written
    std::uint64_t seed = 0;  ///< of the bytes, of the time, or of the mark

    /// Throws what the store throws.
    void makeIn(foundation::storage::provider::Provider& store) const;

    /// What it has to come to. False, and nothing changes, where a store would refuse it.
    bool makeIn(Tree& tree) const;
};

std::string textOf(const Change& change);

/// One that is possible.
Change randomChange(std::mt19937& random, const Tree& tree);

/// Twelve changes of all kinds, possible one after the other in a new store. Files are small, or have
/// `largeSize` bytes.
std::vector<Change> allKinds(std::size_t largeSize);

}  // namespace test
