#include "tests/fault/StarvedStores.hpp"

namespace test {

std::vector<StarvedStore> optionalStarvedStores() { return {}; }

}  // namespace test
