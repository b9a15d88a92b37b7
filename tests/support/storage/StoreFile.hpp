#pragma once

#include <pkgcore/portable/storage/providers/sqlite/SqliteProvider.hpp>

#include "tests/support/TempTree.hpp"

#include <memory>
#include <string>

namespace test {

/// The file of a store, in a temporary folder that goes with it.
class StoreFile {
public:
    using Provider = foundation::storage::provider::Provider;
    using Options = foundation::storage::provider::SqliteOptions;

    explicit StoreFile(const std::string& parent = fastFolder()) : tree_(parent) {}

    const TempTree& tree() const noexcept { return tree_; }
    std::string native() const { return tree_ / "store.db"; }
    std::u16string path() const { return tree_.text("store.db"); }

    /// What most tests need: none of them pulls the plug.
    static Options fast() {
        Options options;
        options.durability = foundation::storage::provider::SqliteDurability::Normal;
        return options;
    }

    /// Makes the store at the first call.
    std::shared_ptr<Provider> open(const Options& options = fast()) const {
        return foundation::storage::provider::openSqliteProvider(path(), options);
    }

private:
    TempTree tree_;
};

}  // namespace test
