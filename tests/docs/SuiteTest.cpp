// The conformance suite of providers.md, with a store of the library as one's own.

#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "providers/suite.includes.inc"

#include <memory>

namespace foundation::storage::conformance {

static std::shared_ptr<provider::Provider> makeMyProvider() { return provider::makeMemoryProvider(); }

}  // namespace foundation::storage::conformance

#include "providers/suite.inc"
