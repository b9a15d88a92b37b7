#include <pkgcore/portable/storage/providers/sqlite/JournalCheck.hpp>

#include <pkgcore/portable/storage/providers/sqlite/JournalFormat.hpp>

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>

namespace foundation::storage::sqlite {

namespace {

using State = JournalHeader::State;

constexpr auto kStep = static_cast<sqlite3_int64>(kRecordSize);

int readOnce(sqlite3_file& file, void* out, std::size_t size, sqlite3_int64 offset) noexcept {
    return file.pMethods->xRead(&file, out, static_cast<int>(size), offset);
}

/// What is behind the end of the file is zeros then.
int readAt(sqlite3_file& file, void* out, std::size_t size, sqlite3_int64 offset) noexcept {
    const int result = readOnce(file, out, size, offset);
    return result == SQLITE_IOERR_SHORT_READ ? SQLITE_OK : result;
}

bool isSectorSize(std::uint32_t size) noexcept {
    constexpr std::uint32_t kMax = 65536;
    return size >= kSector && size <= kMax && (size & (size - 1)) == 0;
}

/// Whether the store has a write-ahead log, by its first page. As long as it has, that page changes without
/// the journal.
bool hasLog(const char* page) noexcept {
    constexpr std::size_t kVersionAt = 18;
    return page[kVersionAt] == 2;
}

class JournalCheck {
public:
    JournalCheck(sqlite3_file& journal, sqlite3_file* store) noexcept : journal_(journal), store_(store) {}

    /// An empty one, as it lies beside a store that is open, costs no more than this one look.
    int run() noexcept {
        JournalHeader header;
        const int found = readOnce(journal_, header.data(), JournalHeader::kSize, 0);
        if (found == SQLITE_IOERR_SHORT_READ) {
            return header.state(0) == State::Open ? SQLITE_OK : kDamagedJournal;
        }
        const int result = found == SQLITE_OK ? journal_.pMethods->xFileSize(&journal_, &size_) : found;
        return result == SQLITE_OK ? checkSegments() : result;
    }

private:
    int checkSegments() noexcept {
        int result = SQLITE_OK;
        while (result == SQLITE_OK && at_ < size_) {
            result = checkNext();
        }
        return result;
    }

    int checkNext() noexcept {
        JournalHeader header;
        const int result = readAt(journal_, header.data(), JournalHeader::kSize, at_);
        if (result != SQLITE_OK) {
            return result;
        }
        switch (header.state(at_)) {
            case State::Open:
                return checkRest(header);
            case State::Sealed:
                return checkSegment(header);
            case State::Damaged:
                break;
        }
        return kDamagedJournal;
    }

    int checkSegment(const JournalHeader& header) noexcept {
        const bool isKnown = header.pageSize() == kPageSize && isSectorSize(header.sectorSize());
        sector_ = isKnown ? header.sectorSize() : kSector;
        const sqlite3_int64 begin = at_ + sector_;
        const sqlite3_int64 end = begin + header.records() * kStep;
        if (!isKnown || end > size_) {
            return kDamagedJournal;
        }
        for (sqlite3_int64 at = begin; at < end; at += kStep) {
            const int result = checkRecord(at, header.nonce());
            if (result != SQLITE_OK) return result;
        }
        at_ = (end + sector_ - 1) / sector_ * sector_;
        return SQLITE_OK;
    }

    int checkRecord(sqlite3_int64 at, std::uint32_t nonce) noexcept {
        JournalRecord record;
        const int result = readAt(journal_, record.data(), kRecordSize, at);
        if (result != SQLITE_OK) {
            return result;
        }
        const bool isSound = record.fitsSeal() && record.fitsChecksum(nonce);
        return isSound ? compareFirstPage(record) : kDamagedJournal;
    }

    /// The first page is part of each change and comes into the store when all of the journal is on the disk:
    /// if it is there, the header here was sealed, and is no longer.
    int checkRest(const JournalHeader& header) noexcept {
        sector_ = isSectorSize(header.sectorSize()) ? header.sectorSize() : sector_;
        for (sqlite3_int64 at = at_ + sector_; at + kStep <= size_; at += kStep) {
            JournalRecord record;
            int result = readAt(journal_, record.data(), kRecordSize, at);
            if (result == SQLITE_OK && record.number() == 1 && record.fitsSeal()) {
                result = compareFirstPage(record);
            }
            if (result != SQLITE_OK) return result;
        }
        at_ = size_;
        return isFirstPageChanged_ ? kDamagedJournal : SQLITE_OK;
    }

    /// Notes whether the first page, if it is this one, is another one in the store by now, or half of one.
    int compareFirstPage(const JournalRecord& record) noexcept {
        if (record.number() != 1 || store_ == nullptr) {
            return SQLITE_OK;
        }
        std::array<char, kPageSize> page;
        const int result = readAt(*store_, page.data(), kPageSize, 0);
        const auto sealed = static_cast<std::ptrdiff_t>(kPageSize - kPageSealSize);
        const bool isHalf = result == SQLITE_IOERR_DATA;
        const bool isOther = isHalf || !std::equal(page.begin(), page.begin() + sealed, record.page());
        isFirstPageChanged_ = isOther && !(hasLog(page.data()) && hasLog(record.page()));
        return isHalf ? SQLITE_OK : result;
    }

    sqlite3_file& journal_;
    sqlite3_file* store_;
    sqlite3_int64 size_ = 0;
    sqlite3_int64 at_ = 0;  ///< where a header is, or the end
    sqlite3_int64 sector_ = kSector;
    bool isFirstPageChanged_ = false;
};

}  // namespace

int checkJournal(sqlite3_file& journal, sqlite3_file* store) noexcept {
    return JournalCheck(journal, store).run();
}

}  // namespace foundation::storage::sqlite
