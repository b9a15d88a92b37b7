#pragma once

#include "tests/conformance/model/Lockstep.hpp"

#include <vector>

namespace test::model {

/// The stores that have a library of their own, as far as they are built.
std::vector<Store> optionalStores();

}  // namespace test::model
