#pragma once

#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>

#include <string>

namespace fl::filesystem::posix {

/// Which of two items an error concerns.
enum class Side : unsigned char { Source, Destination };

/// How a step from one item to another ended: 0, or an error number of the system and the item concerned. A
/// value, since a tree copies thousands of files and a path is only built for the one that fails.
struct [[nodiscard]] Outcome {
    int error = 0;
    Side side = Side::Source;

    bool failed() const noexcept { return error != 0; }
};

inline Outcome atSource(int error) noexcept { return {error, Side::Source}; }
inline Outcome atDestination(int error) noexcept { return {error, Side::Destination}; }

/// Throws what a failed outcome stands for, with the path of the item concerned.
inline void throwIfFailed(Outcome outcome, const std::u16string& from, const std::u16string& to) {
    if (outcome.failed()) {
        throwError(outcome.error, outcome.side == Side::Source ? from : to);
    }
}

}  // namespace fl::filesystem::posix
