#pragma once

#include "tests/conformance/model/Client.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace test::model {

/// A way to a new, empty store.
struct Store {
    std::string name;
    std::function<std::unique_ptr<Client>()> make;
};

/// Where a store did something else than the model.
struct Difference {
    std::size_t step;
    std::string text;
};

/// Runs a script in new stores and in a model at once, up to the first difference.
std::optional<Difference> firstDifference(const Script& script, const std::vector<Store>& stores);

/// The shortest script to be found that still shows a difference.
Script shortest(Script script, std::size_t failingStep, const std::vector<Store>& stores);

}  // namespace test::model
