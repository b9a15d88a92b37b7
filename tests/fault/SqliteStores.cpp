#include "tests/fault/StarvedStores.hpp"
#include "tests/support/storage/StoreFile.hpp"

namespace test {

std::vector<StarvedStore> optionalStarvedStores() {
    return {{"Sqlite", [] {
                 auto file = std::make_shared<StoreFile>();
                 auto store = file->open();
                 return StarvedStore::Made{std::move(store), std::move(file)};
             }}};
}

}  // namespace test
