#pragma once

#include "tests/reference/ReferenceUtf8.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

/// What fuzz targets share: a check that ends the process, and texts made of the bytes that libFuzzer gives.
namespace fuzz {

inline void require(bool condition) {
    if (!condition) std::abort();
}

inline std::string bytesOf(const std::uint8_t* data, std::size_t size) {
    return std::string(data, data + size);
}

/// The length of the sequence that stands at `at`; 0 for a byte that is no part of one.
inline std::size_t sequenceAt(const std::string& bytes, std::size_t at) {
    const auto lead = static_cast<unsigned char>(bytes[at]);
    const std::size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (lead > 0xF4 || at + length > bytes.size()) return 0;
    const auto tail = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    const bool whole = length < 2 || std::all_of(tail + 1, tail + static_cast<std::ptrdiff_t>(length),
                                                 [](char byte) { return (byte & 0xC0) == 0x80; });
    return whole ? length : 0;
}

/// UTF-8 in which surrogates may be written, three bytes each, so that every sequence of UTF-16 units can be
/// reached; any other byte is U+DC00 plus the byte, as in names of files.
inline std::u16string textOf(const std::string& bytes) {
    std::u16string text;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = sequenceAt(bytes, at);
        if (length == 0) {
            text += static_cast<char16_t>(0xDC00 + static_cast<unsigned char>(bytes[at++]));
            continue;
        }
        reference::appendUtf16(text, reference::assemble(bytes, at, length));
        at += length;
    }
    return text;
}

/// What stands before the first end of a line, and what stands behind it.
inline std::pair<std::u16string, std::u16string> lineAndRest(const std::u16string& text) {
    const std::size_t end = std::min(text.find(u'\n'), text.size());
    return {text.substr(0, end), text.substr(std::min(end + 1, text.size()))};
}

}  // namespace fuzz
