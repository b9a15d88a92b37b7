#include <pkgcore/portable/storage/providers/sqlite/PageSeal.hpp>

#include <pkgcore/portable/storage/providers/sqlite/BigEndian.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Hash.hpp>

#include <algorithm>
#include <string_view>

namespace foundation::storage::sqlite {

namespace {

constexpr std::size_t kLinkSize = 4;
constexpr std::size_t kLinkSealAt = kPageSize - kPageSealSize;
constexpr std::size_t kSealAt = kLinkSealAt + kLinkSize;

std::uint64_t sealOf(const char* page, std::uint64_t number) noexcept {
    return hashOf({page, kSealAt}, number);
}

std::uint32_t linkSealOf(const char* page, std::uint64_t number) noexcept {
    return static_cast<std::uint32_t>(hashOf({page, kLinkSize}, number));
}

}  // namespace

void sealPage(char* page, std::uint64_t number) noexcept {
    writeU32(page + kLinkSealAt, linkSealOf(page, number));
    writeU64(page + kSealAt, sealOf(page, number));
}

bool fitsSeal(const char* page, std::uint64_t number) noexcept {
    return readU64(page + kSealAt) == sealOf(page, number);
}

bool fitsLinkSeal(const char* page, std::uint64_t number) noexcept {
    return readU32(page + kLinkSealAt) == linkSealOf(page, number);
}

// The first page has the header of the file in front; the others say at once what they are.
bool isTreePage(const char* page, std::uint64_t number) noexcept {
    constexpr std::string_view kKinds = "\x02\x05\x0A\x0D";
    return number == 1 || kKinds.find(*page) != std::string_view::npos;
}

bool isHole(const char* page) noexcept {
    return std::all_of(page, page + kPageSize, [](char byte) { return byte == 0; });
}

}  // namespace foundation::storage::sqlite
