#pragma once

#include <unicode/utf16.h>

#include <cstddef>

namespace fl::i18n::portable {

/// The code point at `position`, which moves behind it. An unpaired surrogate comes out as itself.
inline char32_t nextCodePoint(const char16_t* text, std::size_t& position, std::size_t length) noexcept {
    const char16_t unit = text[position++];
    const bool paired = U16_IS_LEAD(unit) && position != length && U16_IS_TRAIL(text[position]);
    return paired ? static_cast<char32_t>(U16_GET_SUPPLEMENTARY(unit, text[position++])) : unit;
}

}  // namespace fl::i18n::portable
