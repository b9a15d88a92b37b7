#include <pkgcore/portable/storage/providers/sqlite/PageSeal.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Hash.hpp>

#include <algorithm>

namespace foundation::storage::sqlite {

namespace {

constexpr std::size_t kSealed = kPageSize - kPageSealSize;

std::uint64_t sealOf(const char* page, std::uint64_t number) noexcept {
    return hashOf({page, kSealed}, number);
}

std::uint64_t sealIn(const char* page) noexcept {
    std::uint64_t seal = 0;
    for (const char* byte = page + kSealed; byte != page + kPageSize; ++byte) {
        seal = seal << 8U | static_cast<unsigned char>(*byte);
    }
    return seal;
}

}  // namespace

void sealPage(char* page, std::uint64_t number) noexcept {
    std::uint64_t rest = sealOf(page, number);
    for (char* byte = page + kPageSize; byte != page + kSealed; rest >>= 8U) {
        *--byte = static_cast<char>(rest & 0xFFU);
    }
}

bool fitsSeal(const char* page, std::uint64_t number) noexcept {
    return sealIn(page) == sealOf(page, number);
}

bool isHole(const char* page) noexcept {
    return std::all_of(page, page + kPageSize, [](char byte) { return byte == 0; });
}

}  // namespace foundation::storage::sqlite
