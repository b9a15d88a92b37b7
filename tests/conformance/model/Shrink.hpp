#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace test::model {

/// A short list that fails as the given one does: none of its steps can be left out. Delta debugging: leaves
/// out ever smaller pieces for as long as the rest still fails.
template <typename Step, typename Fails>
std::vector<Step> shrink(std::vector<Step> steps, const Fails& fails) {
    std::size_t piece = std::max<std::size_t>(steps.size() / 2, 1);
    for (;;) {
        bool isShorter = false;
        for (std::size_t begin = 0; begin < steps.size();) {
            std::vector<Step> rest = steps;
            const auto first = rest.begin() + static_cast<std::ptrdiff_t>(begin);
            const std::size_t count = std::min(piece, steps.size() - begin);
            rest.erase(first, first + static_cast<std::ptrdiff_t>(count));
            if (fails(rest)) {
                steps = std::move(rest);
                isShorter = true;
            } else {
                begin += count;
            }
        }
        if (piece == 1 && !isShorter) {
            return steps;
        }
        piece = std::max<std::size_t>(piece / 2, 1);
    }
}

}  // namespace test::model
