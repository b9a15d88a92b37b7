#pragma once

#include <cstddef>
#include <string>

/// UTF-8 and UTF-16 by the letter of the Unicode Standard, for comparison; slow.
namespace reference {

struct ByteRange {
    unsigned char low;
    unsigned char high;
    constexpr bool holds(char byte) const {
        const auto value = static_cast<unsigned char>(byte);
        return low <= value && value <= high;
    }
};

/// One row of Table 3-7, "Well-Formed UTF-8 Byte Sequences".
struct WellFormed {
    std::size_t length;
    ByteRange bytes[4];
};

inline constexpr WellFormed kTable3_7[] = {
    {1, {{0x00, 0x7F}}},
    {2, {{0xC2, 0xDF}, {0x80, 0xBF}}},
    {3, {{0xE0, 0xE0}, {0xA0, 0xBF}, {0x80, 0xBF}}},
    {3, {{0xE1, 0xEC}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {3, {{0xED, 0xED}, {0x80, 0x9F}, {0x80, 0xBF}}},
    {3, {{0xEE, 0xEF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {4, {{0xF0, 0xF0}, {0x90, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {4, {{0xF1, 0xF3}, {0x80, 0xBF}, {0x80, 0xBF}, {0x80, 0xBF}}},
    {4, {{0xF4, 0xF4}, {0x80, 0x8F}, {0x80, 0xBF}, {0x80, 0xBF}}},
};

/// How many bytes at `at` begin a sequence of the row.
inline std::size_t matching(const std::string& text, std::size_t at, const WellFormed& row) {
    std::size_t count = 0;
    while (count < row.length && at + count < text.size() && row.bytes[count].holds(text[at + count]))
        ++count;
    return count;
}

inline char32_t assemble(const std::string& text, std::size_t at, std::size_t length) {
    constexpr unsigned kLeadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    char32_t value = static_cast<unsigned char>(text[at]) & kLeadBits[length];
    for (std::size_t i = 1; i < length; ++i)
        value = value << 6 | (static_cast<unsigned char>(text[at + i]) & 0x3FU);
    return value;
}

inline void appendUtf16(std::u16string& out, char32_t value) {
    if (value < 0x10000) {
        out.push_back(static_cast<char16_t>(value));
        return;
    }
    out.push_back(static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF)));
}

struct Decoded {
    std::u16string text;
    std::size_t malformed = 0;  // maximal subparts replaced by U+FFFD
    std::size_t firstMalformed = std::string::npos;
};

inline Decoded decodeUtf8(const std::string& text) {
    Decoded result;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t longest = 1;  // a byte that begins nothing stands alone
        bool whole = false;
        for (const WellFormed& row : kTable3_7) {
            const std::size_t count = matching(text, at, row);
            if (count > longest) longest = count;
            if (count == row.length) whole = true;
        }
        if (!whole && result.malformed++ == 0) result.firstMalformed = at;
        appendUtf16(result.text, whole ? assemble(text, at, longest) : char32_t{0xFFFD});
        at += longest;
    }
    return result;
}

inline void appendUtf8(std::string& out, char32_t value) {
    const auto put = [&](char32_t byte) {
        out.push_back(static_cast<char>(static_cast<unsigned char>(byte)));
    };
    if (value < 0x80) return put(value);
    if (value < 0x800) {
        put(0xC0 | value >> 6);
    } else if (value < 0x10000) {
        put(0xE0 | value >> 12);
        put(0x80 | (value >> 6 & 0x3F));
    } else {
        put(0xF0 | value >> 18);
        put(0x80 | (value >> 12 & 0x3F));
        put(0x80 | (value >> 6 & 0x3F));
    }
    put(0x80 | (value & 0x3F));
}

struct Encoded {
    std::string bytes;
    std::size_t unpaired = 0;  // surrogates replaced by U+FFFD
};

inline Encoded encodeUtf8(const std::u16string& text) {
    Encoded result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t value = text[i];
        const bool lead = value >= 0xD800 && value <= 0xDBFF;
        if (lead && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) {
            value = 0x10000 + ((value - 0xD800) << 10) + (text[++i] - 0xDC00U);
        } else if (value >= 0xD800 && value <= 0xDFFF) {
            value = 0xFFFD;
            ++result.unpaired;
        }
        appendUtf8(result.bytes, value);
    }
    return result;
}

}  // namespace reference
