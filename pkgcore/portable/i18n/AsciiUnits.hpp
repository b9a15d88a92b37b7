#pragma once

#include <algorithm>
#include <cstddef>

/// The functions of AsciiRun.hpp one unit at a time: all there is where no vectors are, and for texts shorter
/// than one.
namespace fl::i18n::portable {

constexpr bool isAscii(char16_t unit) noexcept { return unit < 0x80; }
constexpr bool isAscii(char byte) noexcept { return (static_cast<unsigned char>(byte) & 0x80) == 0; }

constexpr char16_t lowerAscii(char16_t unit) noexcept {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit | 0x20) : unit;
}

inline std::size_t asciiUnits(const char16_t* in, std::size_t length) noexcept {
    std::size_t i = 0;
    while (i < length && isAscii(in[i])) ++i;
    return i;
}

inline std::size_t narrowAsciiUnits(const char16_t* in, std::size_t length, char* out) noexcept {
    std::size_t i = 0;
    for (; i < length && isAscii(in[i]); ++i) out[i] = static_cast<char>(in[i]);
    return i;
}

inline std::size_t widenAsciiUnits(const char* in, std::size_t length, char16_t* out) noexcept {
    std::size_t i = 0;
    for (; i < length && isAscii(in[i]); ++i) out[i] = static_cast<char16_t>(in[i]);
    return i;
}

inline std::size_t lowerAsciiUnits(const char16_t* in, std::size_t length, char16_t* out) noexcept {
    std::size_t i = 0;
    for (; i < length && isAscii(in[i]); ++i) out[i] = lowerAscii(in[i]);
    return i;
}

inline std::size_t findOneByOne(const char16_t* in, std::size_t length, char16_t unit) noexcept {
    return static_cast<std::size_t>(std::find(in, in + length, unit) - in);
}

inline bool holdsNulUnit(const char16_t* in, std::size_t length) noexcept {
    return findOneByOne(in, length, u'\0') != length;
}

}  // namespace fl::i18n::portable
