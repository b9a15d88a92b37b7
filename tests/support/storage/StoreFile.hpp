#pragma once

#include <pkgcore/portable/storage/providers/sqlite/SqliteProvider.hpp>

#include "tests/support/TempTree.hpp"

#include <memory>
#include <string>

namespace test {

/// The file of a store, in a temporary folder that goes with it.
class StoreFile {
public:
    std::u16string path() const { return tree_.text("store.db"); }

    /// Makes the store at the first call. No test pulls the plug.
    std::shared_ptr<foundation::storage::provider::Provider> open() const {
        foundation::storage::provider::SqliteOptions options;
        options.durability = foundation::storage::provider::SqliteDurability::Normal;
        return foundation::storage::provider::openSqliteProvider(path(), options);
    }

private:
    TempTree tree_{fastFolder()};
};

}  // namespace test
