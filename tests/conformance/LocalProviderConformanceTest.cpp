#include <pkgcore/testing/ProviderConformance.hpp>

#include <pkgcore/platform/storage/NativePaths.hpp>
#include <pkgcore/portable/storage/providers/local/LocalProvider.hpp>

#include "tests/support/TempTree.hpp"

namespace foundation::storage::conformance {

namespace {

/// A temporary folder of the machine, by way of the scheme "file".
Ground makeLocalGround() {
    const auto tree = std::make_shared<test::TempTree>(test::fastFolder());
    const std::u16string path = test::text(tree->path());
    return Ground{vfs::StorageSystemBuilder().build(), vfs::toAbsoluteIRI(u"file", path).toString(),
                  provider::makeLocalProvider(), provider::Path(path.substr(1)), tree};
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Local, ProviderConformance, testing::Values(Backend{"local", makeLocalGround}),
                         backendName);

}  // namespace foundation::storage::conformance
