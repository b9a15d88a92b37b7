#include "tests/conformance/BackEnds.hpp"

namespace test {

std::vector<BackEnd> optionalBackEnds() { return {}; }

}  // namespace test
