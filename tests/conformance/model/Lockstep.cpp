#include "tests/conformance/model/Lockstep.hpp"

#include "tests/conformance/model/Model.hpp"
#include "tests/conformance/model/Shrink.hpp"

#include <sstream>
#include <utility>

namespace test::model {

std::optional<Difference> firstDifference(const Script& script, const std::vector<Store>& stores) {
    Model model;
    std::vector<std::unique_ptr<Client>> clients;
    for (const Store& store : stores) {
        clients.push_back(store.make());
    }
    for (std::size_t number = 0; number < script.size(); ++number) {
        const Step& step = script[number];
        if (model.leavesOpen(step)) {
            continue;
        }
        const Outcome expected = model.apply(step);
        for (std::size_t i = 0; i < stores.size(); ++i) {
            const Outcome actual = clients[i]->apply(step);
            if (!agree(expected, actual)) {
                std::ostringstream text;
                text << stores[i].name << ": " << step << "\n  expected " << expected << "\n  but got  "
                     << actual;
                return Difference{number, text.str()};
            }
        }
    }
    return std::nullopt;
}

Script shortest(Script script, std::size_t failingStep, const std::vector<Store>& stores) {
    script.resize(failingStep + 1);
    return shrink(std::move(script),
                  [&stores](const Script& shorter) { return firstDifference(shorter, stores).has_value(); });
}

}  // namespace test::model
