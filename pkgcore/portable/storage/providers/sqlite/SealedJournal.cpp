#include <pkgcore/portable/storage/providers/sqlite/SealedJournal.hpp>

#include <pkgcore/portable/storage/providers/sqlite/BigEndian.hpp>
#include <pkgcore/portable/storage/providers/sqlite/JournalCheck.hpp>
#include <pkgcore/portable/storage/providers/sqlite/JournalFormat.hpp>
#include <pkgcore/portable/storage/providers/sqlite/LayeredFile.hpp>

#include <sqlite3.h>

#include <algorithm>
#include <array>

namespace foundation::storage::sqlite {

namespace {

constexpr auto kHeaderSize = static_cast<int>(JournalHeader::kSize);

struct SealedJournal : LayeredFile {
    const char* path = nullptr;  ///< SQLite's, by which it knows the store
    JournalHeader header;        ///< of the segment that is being written
    sqlite3_int64 headerAt = -1;
    std::uint32_t number = 0;  ///< of the page that comes next
    sqlite3_int64 numberAt = -1;
    bool isUnchecked = false;  ///< it is opened to be brought back
};

SealedJournal& journalOf(sqlite3_file* file) noexcept { return *static_cast<SealedJournal*>(file); }

int readBelow(sqlite3_file* file, void* out, int size, sqlite3_int64 offset) noexcept {
    return forward(file,
                   [=](const auto& methods, auto* below) { return methods.xRead(below, out, size, offset); });
}

int writeBelow(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) noexcept {
    return forward(
        file, [=](const auto& methods, auto* below) { return methods.xWrite(below, bytes, size, offset); });
}

std::uint32_t numberIn(const void* bytes) noexcept { return readU32(static_cast<const char*>(bytes)); }

/// Keeps the page in the memory of SQLite as it is.
int writePage(sqlite3_file* file, const void* bytes, sqlite3_int64 offset) noexcept {
    const SealedJournal& journal = journalOf(file);
    if (journal.numberAt + static_cast<sqlite3_int64>(kNumberSize) != offset) {
        return SQLITE_IOERR_WRITE;
    }
    std::array<char, kPageSize> page;
    std::copy_n(static_cast<const char*>(bytes), kPageSize, page.begin());
    sealPage(page.data(), journal.number);
    return writeBelow(file, page.data(), static_cast<int>(kPageSize), offset);
}

/// What a killed process has left is cut off, or it might stand behind the new records, where a header is
/// looked for.
int cutOff(sqlite3_file* file) noexcept {
    sqlite3_int64 size = 0;
    const int result = sizeBelow(file, &size);
    return result == SQLITE_OK && size > 0 ? truncateBelow(file, 0) : result;
}

/// The header of a segment that begins. Where a sector is larger than a page, SQLite repeats it.
int beginSegment(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) noexcept {
    SealedJournal& journal = journalOf(file);
    JournalHeader header;
    std::copy_n(static_cast<const char*>(bytes), JournalHeader::kPlainSize, header.data());
    const bool isFirst = header.sectorSize() != 0 && offset % header.sectorSize() == 0;
    if (isFirst) {
        journal.header = header;
        journal.headerAt = offset;
    }
    const int result = offset == 0 ? cutOff(file) : SQLITE_OK;
    return result == SQLITE_OK ? writeBelow(file, bytes, size, offset) : result;
}

/// The mark that the records are on the disk, and how many; the seal goes with it.
int finishSegment(sqlite3_file* file, const void* bytes, sqlite3_int64 offset) noexcept {
    SealedJournal& journal = journalOf(file);
    if (offset != journal.headerAt) {
        return SQLITE_IOERR_WRITE;
    }
    std::copy_n(static_cast<const char*>(bytes), JournalHeader::kMarkSize, journal.header.data());
    journal.header.seal(offset);
    return writeBelow(file, journal.header.data(), kHeaderSize, offset);
}

/// A journal that is over and would be kept is emptied: its records are no longer those of the store, and
/// would look as if their header had become zeros.
int eraseHeader(sqlite3_file* file, sqlite3_int64 offset) noexcept {
    if (offset == 0) {
        return truncateBelow(file, 0);
    }
    const JournalHeader nothing;
    return writeBelow(file, nothing.data(), kHeaderSize, offset);
}

/// What SQLite writes of a header: all of its sector, the mark of one that is finished, or zeros over its
/// first byte or all of it, so that it is none any more.
int writeHeader(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) noexcept {
    if (size >= kSector) {
        return beginSegment(file, bytes, size, offset);
    }
    return size == static_cast<int>(JournalHeader::kMarkSize) ? finishSegment(file, bytes, offset)
                                                              : eraseHeader(file, offset);
}

bool isHeader(int size, sqlite3_int64 offset) noexcept {
    const bool isPart = size == 1 || size == static_cast<int>(JournalHeader::kMarkSize) ||
                        size == static_cast<int>(JournalHeader::kPlainSize);
    return offset % kSector == 0 && (isPart || size >= kSector);
}

int writeJournal(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) noexcept {
    if (isPageOfRecord(size, offset)) {
        return writePage(file, bytes, offset);
    }
    if (isHeader(size, offset)) {
        return writeHeader(file, bytes, size, offset);
    }
    if (size == static_cast<int>(kNumberSize)) {
        journalOf(file).number = numberIn(bytes);
        journalOf(file).numberAt = offset;
    }
    return writeBelow(file, bytes, size, offset);
}

int readPage(sqlite3_file* file, void* out, sqlite3_int64 offset) noexcept {
    char number[kNumberSize] = {};
    constexpr auto kSize = static_cast<int>(kNumberSize);
    int result = readBelow(file, number, kSize, offset - kSize);
    if (result == SQLITE_OK) {
        result = readBelow(file, out, static_cast<int>(kPageSize), offset);
    }
    const bool isDamaged = result == SQLITE_OK && !fitsSeal(static_cast<const char*>(out), numberIn(number));
    return isDamaged ? kDamagedJournal : result;
}

/// By its first byte SQLite tells whether there is something to be rolled back. It holds a lock then that
/// keeps everybody from writing to the store, so that a journal with a header that counts is nobody's. Many
/// may ask at once, and who brings it back must be alone: none of them is to take long.
bool isQuestion(int size, sqlite3_int64 offset) noexcept { return size == 1 && offset == 0; }

/// Before the first read of who brings it back, when nobody else has the store and nothing is changed yet.
int checkWhereDue(sqlite3_file* file, int size, sqlite3_int64 offset) noexcept {
    SealedJournal& journal = journalOf(file);
    if (journal.isUnchecked) {
        journal.isUnchecked = false;
        return checkJournal(*journal.below, sqlite3_database_file_object(journal.path));
    }
    return isQuestion(size, offset)
               ? checkBeginning(*journal.below, sqlite3_database_file_object(journal.path))
               : SQLITE_OK;
}

int readJournal(sqlite3_file* file, void* out, int size, sqlite3_int64 offset) noexcept {
    const int result = checkWhereDue(file, size, offset);
    if (result != SQLITE_OK) {
        return result;
    }
    return isPageOfRecord(size, offset) ? readPage(file, out, offset) : readBelow(file, out, size, offset);
}

/// Who asks opens it for reading alone, who begins one may make it.
bool isToBeBroughtBack(int flags) noexcept {
    return (flags & SQLITE_OPEN_READWRITE) != 0 && (flags & SQLITE_OPEN_CREATE) == 0;
}

constexpr sqlite3_io_methods kMethods = methodsOver(1, {closeOver<SealedJournal>, readJournal, writeJournal});

}  // namespace

int sealedJournalSize(int sizeBelow) noexcept { return sizeOver<SealedJournal>(sizeBelow); }

int openSealedJournal(sqlite3_vfs& below, const char* path, sqlite3_file* out, int flags,
                      int* given) noexcept {
    const int result = openOver<SealedJournal>(below, path, out, flags, given);
    if (result == SQLITE_OK) {
        journalOf(out).path = path;
        journalOf(out).isUnchecked = isToBeBroughtBack(flags);
        out->pMethods = &kMethods;
    }
    return result;
}

}  // namespace foundation::storage::sqlite
