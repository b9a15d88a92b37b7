#include <pkgcore/testing/ProviderConformance.hpp>

#include "tests/support/storage/StoreFile.hpp"

namespace foundation::storage::conformance {

namespace {

/// A store in a file of its own.
Ground makeSqliteGround() {
    const auto file = std::make_shared<test::StoreFile>();
    const auto store = file->open();
    return Ground{vfs::StorageSystemBuilder().mount(u"sqlite", u"store", store).build(), u"sqlite://store/",
                  store, provider::Path(), file};
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Sqlite, ProviderConformance, testing::Values(Backend{"sqlite", makeSqliteGround}),
                         backendName);

}  // namespace foundation::storage::conformance
