#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>

#include "tests/conformance/model/OptionalStores.hpp"
#include "tests/support/storage/StoreFile.hpp"

namespace test::model {

namespace {

std::unique_ptr<Client> makeClient() {
    const auto file = std::make_shared<StoreFile>();
    return std::make_unique<Client>(
        foundation::storage::vfs::StorageSystemBuilder().mount(u"store", u"s", file->open()).build(),
        u"store://s/", file);
}

}  // namespace

std::vector<Store> optionalStores() { return {{"sqlite", makeClient}}; }

}  // namespace test::model
