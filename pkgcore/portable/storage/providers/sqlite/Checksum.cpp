#include <pkgcore/portable/storage/providers/sqlite/Checksum.hpp>

#include <xxhash.h>

namespace foundation::storage::sqlite {

namespace {

constexpr int kBytes = 8;

/// The same on every machine.
void putNumber(unsigned char* out, std::int64_t number) noexcept {
    auto rest = static_cast<std::uint64_t>(number);
    for (int i = 0; i < kBytes; ++i, rest >>= 8U) {
        out[i] = static_cast<unsigned char>(rest);
    }
}

}  // namespace

std::int64_t Sealer::seal(std::int64_t row, std::string_view bytes) const noexcept {
    unsigned char place[2 * kBytes];
    putNumber(place, key_);
    putNumber(place + kBytes, row);
    const XXH64_hash_t seed = XXH3_64bits(place, sizeof place);
    return static_cast<std::int64_t>(XXH3_64bits_withSeed(bytes.data(), bytes.size(), seed));
}

}  // namespace foundation::storage::sqlite
