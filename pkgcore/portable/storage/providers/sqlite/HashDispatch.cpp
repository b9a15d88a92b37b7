#include <pkgcore/portable/storage/providers/sqlite/Hash.hpp>

#include <xxh_x86dispatch.h>

namespace foundation::storage::sqlite {

namespace {

/// Long enough that the first call looks at the processor.
constexpr char kLong[1024] = {};

}  // namespace

std::uint64_t hashOf(std::string_view bytes, std::uint64_t seed) noexcept {
    // xxHash keeps what it has chosen in a variable that threads must not write at once.
    static const XXH64_hash_t first = XXH3_64bits_withSeed_dispatch(kLong, sizeof kLong, 1);
    static_cast<void>(first);
    return XXH3_64bits_withSeed_dispatch(bytes.data(), bytes.size(), seed);
}

}  // namespace foundation::storage::sqlite
