#include <pkgcore/portable/storage/providers/sqlite/Checksum.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Hash.hpp>

namespace foundation::storage::sqlite {

namespace {

constexpr int kBytes = 8;

/// The same on every machine.
void putNumber(char* out, std::int64_t number) noexcept {
    auto rest = static_cast<std::uint64_t>(number);
    for (int i = 0; i < kBytes; ++i, rest >>= 8U) {
        out[i] = static_cast<char>(rest & 0xFFU);
    }
}

}  // namespace

std::int64_t Sealer::seal(std::int64_t row, std::string_view bytes) const noexcept {
    char place[2 * kBytes];
    putNumber(place, key_);
    putNumber(place + kBytes, row);
    const std::uint64_t seed = hashOf({place, sizeof place}, 0);
    return static_cast<std::int64_t>(hashOf(bytes, seed));
}

}  // namespace foundation::storage::sqlite
