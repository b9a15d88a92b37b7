#include <pkgcore/testing/FaultProvider.hpp>
#include <pkgcore/testing/ProviderConformance.hpp>

#include <pkgcore/portable/storage/providers/folder/FolderProvider.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "examples/own_store/NoteStore.hpp"
#include "tests/conformance/EmulatedStores.hpp"
#include "tests/support/TempTree.hpp"

namespace foundation::storage::conformance {

namespace {

/// A store over a temporary folder.
Ground makeFolderGround() {
    const auto tree = std::make_shared<test::TempTree>(test::fastFolder());
    const auto store = provider::makeFolderProvider(test::text(tree->path()));
    return Ground{vfs::StorageSystemBuilder().mount(u"box", u"inbox", store).build(), u"box://inbox/", store,
                  provider::Path(), tree};
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Memory, ProviderConformance,
                         testing::Values(storeFrom("memory", provider::makeMemoryProvider)), backendName);

INSTANTIATE_TEST_SUITE_P(WithoutFaults, ProviderConformance,
                         testing::Values(storeFrom("faulty",
                                                   [] {
                                                       return std::make_shared<FaultProvider>(
                                                           provider::makeMemoryProvider());
                                                   })),
                         backendName);

INSTANTIATE_TEST_SUITE_P(Folder, ProviderConformance, testing::Values(Backend{"folder", makeFolderGround}),
                         backendName);

INSTANTIATE_TEST_SUITE_P(Emulated, ProviderConformance, testing::ValuesIn(emulatedStores()), backendName);

INSTANTIATE_TEST_SUITE_P(Example, ProviderConformance,
                         testing::Values(storeFrom("notes", std::make_shared<example::NoteStore>)),
                         backendName);

}  // namespace foundation::storage::conformance
