#pragma once

#include <cstddef>
#include <string>

namespace fl::i18n::portable {

/// How long a whole result will be if its rest is like its beginning, and a little for luck.
inline std::size_t extrapolate(std::size_t produced, std::size_t consumed, std::size_t remaining) noexcept {
    if (consumed == 0) return produced + remaining;
    const std::size_t rest = remaining / consumed * produced + remaining % consumed * produced / consumed;
    return produced + rest + rest / 64;
}

/// Collects in a string what a source produces piece by piece.
///
/// The pieces go through a buffer on the stack: a string cannot be made longer without being filled first,
/// and filling megabytes costs as much as converting them. A short result costs one allocation of exact size,
/// or none.
///
/// A source has `std::size_t fill(Unit* out, std::size_t capacity)`, which returns how many units it wrote,
/// `bool done()`, and `consumed()` and `remaining()`, which count units of its input.
template <typename Unit, typename Source>
std::basic_string<Unit> collectChunks(Source source) {
    constexpr std::size_t kChunk = 16384 / sizeof(Unit);
    Unit chunk[kChunk];
    std::size_t length = source.fill(chunk, kChunk);
    if (source.done()) return std::basic_string<Unit>(chunk, length);

    std::basic_string<Unit> text;
    text.reserve(extrapolate(length, source.consumed(), source.remaining()));
    text.append(chunk, length);
    while (!source.done()) {
        length = source.fill(chunk, kChunk);
        text.append(chunk, length);
    }
    // A text that starts in one script and goes on in another may be far from what was expected.
    if (text.capacity() - text.size() > text.size() / 4) text.shrink_to_fit();
    return text;
}

}  // namespace fl::i18n::portable
