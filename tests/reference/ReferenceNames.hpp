#pragma once

#include "tests/reference/ReferenceUtf8.hpp"

#include <cstddef>
#include <optional>
#include <string>

/// Names of files between bytes and UTF-16 by their rule, for comparison: UTF-8, and U+DC00 plus the byte for
/// each byte that is no part of it.
namespace reference {

constexpr bool isSurrogate(char32_t point) { return point >= 0xD800 && point <= 0xDFFF; }

constexpr bool isLoneByte(char32_t point) { return point >= 0xDC80 && point <= 0xDCFF; }

/// The length of the sequence of Table 3-7 that stands whole at `at`; 0 if there is none.
inline std::size_t wellFormedAt(const std::string& bytes, std::size_t at) {
    for (const WellFormed& row : kTable3_7) {
        if (matching(bytes, at, row) == row.length) return row.length;
    }
    return 0;
}

inline std::u16string decodeName(const std::string& bytes) {
    std::u16string name;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = wellFormedAt(bytes, at);
        if (length == 0) {
            name += static_cast<char16_t>(0xDC00 + static_cast<unsigned char>(bytes[at++]));
        } else {
            appendUtf16(name, assemble(bytes, at, length));
            at += length;
        }
    }
    return name;
}

/// Characters; a surrogate that is no half of a pair stands for itself.
inline std::u32string pointsOf(const std::u16string& text) {
    std::u32string points;
    for (const char16_t unit : text) {
        const bool isTrail = unit >= 0xDC00 && unit <= 0xDFFF;
        const bool follows = !points.empty() && points.back() >= 0xD800 && points.back() <= 0xDBFF;
        if (isTrail && follows) {
            points.back() = 0x10000 + ((points.back() - 0xD800) << 10) + (unit - 0xDC00U);
        } else {
            points += unit;
        }
    }
    return points;
}

inline void appendNameByte(std::string& bytes, char32_t point) {
    bytes += static_cast<char>(static_cast<unsigned char>(point - 0xDC00));
}

/// Nothing where no name can be called so: a NUL, or a surrogate that stands for no byte.
inline std::optional<std::string> encodeName(const std::u16string& name) {
    std::string bytes;
    for (const char32_t point : pointsOf(name)) {
        if (isLoneByte(point)) {
            appendNameByte(bytes, point);
        } else if (point == 0 || isSurrogate(point)) {
            return std::nullopt;
        } else {
            appendUtf8(bytes, point);
        }
    }
    return bytes;
}

}  // namespace reference
