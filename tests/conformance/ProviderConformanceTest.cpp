#include <pkgcore/testing/ProviderConformance.hpp>

#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

namespace foundation::storage::conformance {

INSTANTIATE_TEST_SUITE_P(Memory, ProviderConformance,
                         testing::Values(storeFrom("memory", provider::makeMemoryProvider)), backendName);

}  // namespace foundation::storage::conformance
