#include <pkgcore/portable/storage/providers/sqlite/Checksum.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Hash.hpp>

namespace foundation::storage::sqlite {

NumberBytes bytesOf(std::int64_t number) noexcept {
    NumberBytes bytes;
    auto rest = static_cast<std::uint64_t>(number);
    for (char& byte : bytes) {
        byte = static_cast<char>(rest & 0xFFU);
        rest >>= 8U;
    }
    return bytes;
}

std::int64_t Sealer::seal(std::int64_t row, std::string_view bytes) const noexcept {
    const NumberBytes place[] = {bytesOf(key_), bytesOf(row)};
    const std::uint64_t seed = hashOf({place[0].data(), sizeof place}, 0);
    return static_cast<std::int64_t>(hashOf(bytes, seed));
}

}  // namespace foundation::storage::sqlite
