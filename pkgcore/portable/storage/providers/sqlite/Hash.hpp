#pragma once

#include <cstdint>
#include <string_view>

namespace foundation::storage::sqlite {

/// XXH3 in 64 bits; the same on every machine, by instructions that this one has where xxHash can choose.
std::uint64_t hashOf(std::string_view bytes, std::uint64_t seed) noexcept;

}  // namespace foundation::storage::sqlite
