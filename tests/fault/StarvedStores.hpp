#pragma once

#include <pkgcore/portable/storage/Provider.hpp>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace test {

/// A store that has to get along with little memory.
struct StarvedStore {
    struct Made {
        std::shared_ptr<foundation::storage::provider::Provider> provider;
        std::shared_ptr<void> ground;  ///< what has to live as long
    };

    std::string name;
    std::function<Made()> make;
};

inline void PrintTo(const StarvedStore& store, std::ostream* out) { *out << store.name; }

/// Those with a library of their own.
std::vector<StarvedStore> optionalStarvedStores();

}  // namespace test
