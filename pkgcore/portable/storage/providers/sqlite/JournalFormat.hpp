#pragma once

#include <pkgcore/portable/storage/providers/sqlite/PageSeal.hpp>

#include <array>
#include <cstddef>
#include <cstdint>

namespace foundation::storage::sqlite {

// The rollback journal of a store: that of SQLite (https://www.sqlite.org/fileformat2.html, "The Rollback
// Journal") with seals where SQLite leaves bytes free. It is a line of segments, each with a header that has
// a sector of its own, and records of pages. A segment counts when the number of its records is in the
// header, which is written when they are on the disk.

/// A result code of SQLite's kind that SQLite does not use: a journal that a killed process has left, or a
/// page in it, does not fit its seals.
inline constexpr int kDamagedJournal = 10 /* SQLITE_IOERR */ | 0xFA << 8;

/// What a disk writes wholly or not at all; headers begin at multiples of it.
inline constexpr std::int64_t kSector = 512;

/// The number of the page, the page, and SQLite's checksum.
inline constexpr std::size_t kNumberSize = 4;
inline constexpr std::size_t kRecordSize = kNumberSize + kPageSize + kNumberSize;

/// The header of a segment, with the seal behind what SQLite knows of it.
class JournalHeader {
public:
    static constexpr std::size_t kPlainSize = 28;    ///< SQLite's part
    static constexpr std::size_t kMarkSize = 8 + 4;  ///< what is zero until the records are on the disk
    static constexpr std::size_t kSealSize = 8;
    static constexpr std::size_t kSize = kPlainSize + kSealSize;

    enum class State : unsigned char {
        Open,    ///< its records were not on the disk, so that nothing came into the store because of them
        Sealed,  ///< it is what was written
        Damaged
    };

    char* data() noexcept { return bytes_.data(); }
    const char* data() const noexcept { return bytes_.data(); }

    /// Of one that is found there; or was written there.
    State state(std::int64_t offset) const noexcept;
    void seal(std::int64_t offset) noexcept;

    /// @{
    std::uint32_t records() const noexcept { return numberAt(8); }
    std::uint32_t nonce() const noexcept { return numberAt(12); }
    std::uint32_t sectorSize() const noexcept { return numberAt(20); }
    std::uint32_t pageSize() const noexcept { return numberAt(24); }
    /// @}

private:
    std::uint32_t numberAt(std::size_t at) const noexcept;
    std::uint64_t sealFor(std::int64_t offset) const noexcept;

    std::array<char, kSize> bytes_{};
};

/// A record as it stands in the journal.
class JournalRecord {
public:
    char* data() noexcept { return bytes_.data(); }

    std::uint32_t number() const noexcept;
    const char* page() const noexcept { return bytes_.data() + kNumberSize; }

    bool fitsSeal() const noexcept;

    /// SQLite's own, without which it takes the record for the end of the journal.
    bool fitsChecksum(std::uint32_t nonce) const noexcept;

private:
    std::array<char, kRecordSize> bytes_;
};

/// Whether a piece of the journal is the page of a record. Headers lie at multiples of kSector, and so do
/// segments; the pages in them lie 4 bytes behind multiples of 8.
constexpr bool isPageOfRecord(int size, std::int64_t offset) noexcept {
    return size == static_cast<int>(kPageSize) && offset % 8 == 4;
}

}  // namespace foundation::storage::sqlite
