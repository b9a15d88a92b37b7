#include <pkgcore/portable/storage/providers/sqlite/Hash.hpp>

#include <xxhash.h>

namespace foundation::storage::sqlite {

std::uint64_t hashOf(std::string_view bytes, std::uint64_t seed) noexcept {
    return XXH3_64bits_withSeed(bytes.data(), bytes.size(), seed);
}

}  // namespace foundation::storage::sqlite
