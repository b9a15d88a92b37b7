#pragma once

#include <boost/endian/conversion.hpp>

#include <cstdint>

namespace foundation::storage::sqlite {

// Numbers as SQLite's files have them: the high byte first, anywhere in memory.

inline std::uint32_t readU32(const char* from) noexcept {
    return boost::endian::load_big_u32(reinterpret_cast<const unsigned char*>(from));
}

inline std::uint64_t readU64(const char* from) noexcept {
    return boost::endian::load_big_u64(reinterpret_cast<const unsigned char*>(from));
}

inline void writeU32(char* to, std::uint32_t number) noexcept {
    boost::endian::store_big_u32(reinterpret_cast<unsigned char*>(to), number);
}

inline void writeU64(char* to, std::uint64_t number) noexcept {
    boost::endian::store_big_u64(reinterpret_cast<unsigned char*>(to), number);
}

}  // namespace foundation::storage::sqlite
