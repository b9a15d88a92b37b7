#pragma once

#include "tests/reference/ReferenceNames.hpp"

#include <cstddef>
#include <optional>
#include <string>

/// Wide strings and encodings that are simple enough to be written down, for comparison.
namespace reference {

/// A character each; a surrogate without its other half stays what it is.
inline std::wstring widened(const std::u16string& text) {
    std::wstring wide;
    for (const char32_t point : pointsOf(text)) wide += static_cast<wchar_t>(point);
    return wide;
}

/// Nothing where a value is no code point.
inline std::optional<std::u16string> narrowed(const std::wstring& wide) {
    std::u16string text;
    for (const wchar_t character : wide) {
        if (character < 0 || character > 0x10FFFF) return std::nullopt;
        appendUtf16(text, static_cast<char32_t>(character));
    }
    return text;
}

/// A lenient conversion, and whether a strict one comes to its end.
template <typename Text>
struct Converted {
    Text text;
    bool isWhole = true;
};

/// Of an encoding whose bytes are the first `count` characters of Unicode.
inline Converted<std::u16string> decodedFirst(const std::string& bytes, unsigned count) {
    Converted<std::u16string> result;
    for (const char byte : bytes) {
        const unsigned value = static_cast<unsigned char>(byte);
        result.text += value < count ? static_cast<char16_t>(value) : u'\uFFFD';
        result.isWhole = result.isWhole && value < count;
    }
    return result;
}

inline Converted<std::string> encodedFirst(const std::u16string& text, unsigned count) {
    Converted<std::string> result;
    for (const char32_t point : pointsOf(text)) {
        result.text += static_cast<char>(point < count ? static_cast<unsigned char>(point) : 0x1A);
        result.isWhole = result.isWhole && point < count;
    }
    return result;
}

}  // namespace reference
