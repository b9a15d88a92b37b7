#include <pkgcore/portable/storage/providers/sqlite/JournalFormat.hpp>

#include <pkgcore/portable/storage/providers/sqlite/BigEndian.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Hash.hpp>

#include <algorithm>
#include <string_view>

namespace foundation::storage::sqlite {

namespace {

constexpr std::string_view kMagic("\xd9\xd5\x05\xf9\x20\xa1\x63\xd7", 8);

bool isZero(const char* begin, std::size_t size) noexcept {
    return std::all_of(begin, begin + size, [](char byte) { return byte == 0; });
}

/// SQLite's sum of every 200th byte, from the end on.
std::uint32_t checksumOf(const char* page, std::uint32_t nonce) noexcept {
    constexpr std::size_t kStep = 200;
    std::uint32_t sum = nonce;
    for (std::size_t at = kPageSize - kStep; at > 0 && at < kPageSize; at -= kStep) {
        sum += static_cast<unsigned char>(page[at]);
    }
    return sum;
}

}  // namespace

std::uint32_t JournalHeader::numberAt(std::size_t at) const noexcept { return readU32(data() + at); }

std::uint64_t JournalHeader::sealFor(std::int64_t offset) const noexcept {
    return hashOf({data(), kPlainSize}, static_cast<std::uint64_t>(offset));
}

void JournalHeader::seal(std::int64_t offset) noexcept { writeU64(data() + kPlainSize, sealFor(offset)); }

// Part of the mark and of the seal was never written alone: they are in one sector, and go there at once.
JournalHeader::State JournalHeader::state(std::int64_t offset) const noexcept {
    const char* const seal = data() + kPlainSize;
    if (isZero(data(), kMarkSize) && isZero(seal, kSealSize)) {
        return State::Open;
    }
    const bool isSealed =
        std::string_view(data(), kMagic.size()) == kMagic && readU64(seal) == sealFor(offset);
    return isSealed ? State::Sealed : State::Damaged;
}

std::uint32_t JournalRecord::number() const noexcept { return readU32(bytes_.data()); }

bool JournalRecord::fitsSeal() const noexcept { return number() != 0 && sqlite::fitsSeal(page(), number()); }

bool JournalRecord::fitsChecksum(std::uint32_t nonce) const noexcept {
    return readU32(page() + kPageSize) == checksumOf(page(), nonce);
}

}  // namespace foundation::storage::sqlite
