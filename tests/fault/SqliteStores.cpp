#include "tests/fault/AllocationCounter.hpp"
#include "tests/fault/StarvedStores.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <new>

namespace test {

std::vector<StarvedStore> optionalStarvedStores() {
    return {{"Sqlite", [] {
                 auto file = std::make_shared<StoreFile>();
                 auto store = file->open();
                 return StarvedStore::Made{std::move(store), std::move(file)};
             }}};
}

namespace {

/// False once the store is made before memory runs out.
bool makeStoreWithout(long at, bool persistent) {
    const StoreFile file;
    const std::u16string path = file.path();
    {
        const ScarceMemory scarce(at, persistent);
        try {
            foundation::storage::provider::openSqliteProvider(path);
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(ScarceMemory::wasReached());
        }
    }
    for (const auto& item : std::filesystem::directory_iterator(file.tree().path())) {
        EXPECT_EQ(item.path().filename(), "store.db") << "at allocation " << at;
    }
    EXPECT_NO_THROW(file.open());
    return ScarceMemory::wasReached();
}

TEST(SqliteAllocation, AStoreThatCannotBeMadeLeavesNothing) {
    for (const bool persistent : {false, true}) {
        long at = 1;
        while (makeStoreWithout(at, persistent) && !testing::Test::HasFailure()) ++at;
        EXPECT_GT(at, 10);
    }
}

}  // namespace

}  // namespace test
