#include "tests/conformance/model/OptionalStores.hpp"

namespace test::model {

std::vector<Store> optionalStores() { return {}; }

}  // namespace test::model
