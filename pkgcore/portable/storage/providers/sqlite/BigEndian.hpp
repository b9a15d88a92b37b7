#pragma once

#include <cstddef>
#include <cstdint>

namespace foundation::storage::sqlite {

/// A number of `size` bytes, 8 at most, the high one first.
inline std::uint64_t readNumber(const char* from, std::size_t size) noexcept {
    std::uint64_t number = 0;
    for (const char* byte = from; byte != from + size; ++byte) {
        number = number << 8U | static_cast<unsigned char>(*byte);
    }
    return number;
}

inline void writeNumber(char* to, std::size_t size, std::uint64_t number) noexcept {
    for (char* byte = to + size; byte != to; number >>= 8U) {
        *--byte = static_cast<char>(number & 0xFFU);
    }
}

}  // namespace foundation::storage::sqlite
