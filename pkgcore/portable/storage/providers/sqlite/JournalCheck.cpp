#include <pkgcore/portable/storage/providers/sqlite/JournalCheck.hpp>

#include <pkgcore/portable/storage/providers/sqlite/BigEndian.hpp>
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

    /// An empty one, as it lies beside a store that is open, costs no more than this one look. `isWhole` is
    /// false for as much as tells whether there is anything to be brought back.
    int run(bool isWhole) noexcept {
        JournalHeader header;
        const int found = readOnce(journal_, header.data(), JournalHeader::kSize, 0);
        if (found == SQLITE_IOERR_SHORT_READ) {
            return header.state(0) == State::Open ? SQLITE_OK : kDamagedJournal;
        }
        if (!isWhole && found == SQLITE_OK && header.state(0) == State::Sealed) {
            return SQLITE_OK;
        }
        int result = found == SQLITE_OK ? journal_.pMethods->xFileSize(&journal_, &size_) : found;
        if (result == SQLITE_OK) result = lookForLog();
        return result == SQLITE_OK ? checkSegments() : result;
    }

private:
    /// A log changes the store past the journal.
    int lookForLog() noexcept {
        std::array<char, 20> header{};
        const int result = store_ == nullptr ? SQLITE_OK : readAt(*store_, header.data(), header.size(), 0);
        storeHasLog_ = hasLog(header.data());
        return result;
    }

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
        int result = readAt(journal_, record.data(), kRecordSize, at);
        if (result != SQLITE_OK) {
            return result;
        }
        const bool isSound = record.fitsSeal() && record.fitsChecksum(nonce);
        if (isSound && record.number() == 1) {
            result = compare(record);
        }
        return isSound && !isOfEarlierState_ ? result : kDamagedJournal;
    }

    /// No page comes into the store before its record is on the disk and the header is sealed, and the first
    /// page only when all are: if one is there, the header here was sealed, and is no longer.
    int checkRest(const JournalHeader& header) noexcept {
        sector_ = isSectorSize(header.sectorSize()) ? header.sectorSize() : sector_;
        for (sqlite3_int64 at = at_ + sector_; at + kStep <= size_; at += kStep) {
            JournalRecord record;
            int result = readAt(journal_, record.data(), kRecordSize, at);
            if (result == SQLITE_OK && record.fitsSeal()) {
                result = compare(record);
            }
            if (result != SQLITE_OK) return result;
        }
        at_ = size_;
        return isChanged_ ? kDamagedJournal : SQLITE_OK;
    }

    /// Notes whether a page is another one in the store by now. Half of the first page was written there
    /// after this; half of another one may have been damaged at any time, and reading it will tell.
    int compare(const JournalRecord& record) noexcept {
        if (store_ == nullptr) {
            return SQLITE_OK;
        }
        std::array<char, kPageSize> page;
        constexpr auto kSize = static_cast<sqlite3_int64>(kPageSize);
        const int result = readAt(*store_, page.data(), kPageSize, (record.number() - 1) * kSize);
        const bool isHalf = result == SQLITE_IOERR_DATA;
        isChanged_ = isChanged_ ||
                     (record.number() == 1 ? isFirstChanged(page.data(), record.page(), isHalf)
                                           : !isHalf && !storeHasLog_ && isOther(page.data(), record.page()));
        isOfEarlierState_ = record.number() == 1 && !isHalf && !storeHasLog_ &&
                            changesBetween(record.page(), page.data()) > 1;
        return isHalf ? SQLITE_OK : result;
    }

    /// Each change counts one on in the first page. With a log it is counted elsewhere.
    static std::uint32_t changesBetween(const char* before, const char* now) noexcept {
        constexpr std::size_t kCounterAt = 24;
        return readU32(now + kCounterAt) - readU32(before + kCounterAt);
    }

    static bool isOther(const char* one, const char* other) noexcept {
        return !std::equal(one, one + (kPageSize - kPageSealSize), other);
    }
    static bool isFirstChanged(const char* now, const char* before, bool isHalf) noexcept {
        return (isHalf || isOther(now, before)) && !(hasLog(now) && hasLog(before));
    }

    sqlite3_file& journal_;
    sqlite3_file* store_;
    sqlite3_int64 size_ = 0;
    sqlite3_int64 at_ = 0;  ///< where a header is, or the end
    sqlite3_int64 sector_ = kSector;
    bool storeHasLog_ = false;
    bool isChanged_ = false;         ///< a page in the store
    bool isOfEarlierState_ = false;  ///< there were changes since, which would be undone
};

}  // namespace

int checkJournal(sqlite3_file& journal, sqlite3_file* store) noexcept {
    return JournalCheck(journal, store).run(true);
}

int checkBeginning(sqlite3_file& journal, sqlite3_file* store) noexcept {
    return JournalCheck(journal, store).run(false);
}

}  // namespace foundation::storage::sqlite
