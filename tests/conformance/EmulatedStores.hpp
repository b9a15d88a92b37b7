#pragma once

#include <pkgcore/testing/conformance/Backend.hpp>

#include <vector>

namespace foundation::storage::conformance {

/// Stores of which each leaves something else to be put together by the storage system, which must keep the
/// same promises.
const std::vector<Backend>& emulatedStores();

}  // namespace foundation::storage::conformance
