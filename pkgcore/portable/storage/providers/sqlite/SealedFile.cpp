#include <pkgcore/portable/storage/providers/sqlite/SealedFile.hpp>

#include <pkgcore/portable/storage/providers/sqlite/LayeredFile.hpp>
#include <pkgcore/portable/storage/providers/sqlite/PageSeal.hpp>

#include <sqlite3.h>

#include <array>
#include <cstring>
#include <memory>
#include <new>

namespace foundation::storage::sqlite {

namespace {

using Page = std::array<char, kPageSize>;

/// SQLite reads so much of the first page before it knows anything of the file, and without a lock; it reads
/// the whole page before it believes any of it.
constexpr sqlite3_int64 kHeaderSize = 100;

constexpr auto kSize = static_cast<sqlite3_int64>(kPageSize);

struct SealedFile : LayeredFile {
    /// What is being sealed, or read in part.
    std::unique_ptr<Page> page{new (std::nothrow) Page};
    const PageCheck* check = nullptr;
};

SealedFile& fileOf(sqlite3_file* file) noexcept { return *static_cast<SealedFile*>(file); }

std::uint64_t numberAt(sqlite3_int64 offset) noexcept {
    return static_cast<std::uint64_t>(offset / kSize) + 1;
}

// No row of a table that is searched is long, and the list of free pages is read by who writes: so nothing
// but the bytes of a row with a seal of its own can be in a page that is no part of a tree. Where the row
// goes on is looked at, since the pages stay in memory, and a row that is erased gives up its pages by that.
bool fitsItsSeal(const char* page, std::uint64_t number, PageCheck check) noexcept {
    const bool isWhole = check == PageCheck::Whole || isTreePage(page, number);
    return isWhole ? fitsSeal(page, number) : fitsLinkSeal(page, number);
}

/// A hole is what SQLite leaves where it never wrote a free page, and it may read it before it is written. In
/// the place of a page of a table or an index it is damage to SQLite itself, for which none begins with a
/// zero. The last page of a row that takes several may begin so, and passes: those are rows of chunks alone,
/// for which a seal of their own covers the bytes and which are found by a number in front of them.
bool isSound(const char* page, sqlite3_int64 offset, PageCheck check) noexcept {
    return fitsItsSeal(page, numberAt(offset), check) || isHole(page);
}

int readPage(sqlite3_file* file, char* out, sqlite3_int64 offset) noexcept {
    const int result = forward(file, [=](const auto& methods, auto* below) {
        return methods.xRead(below, out, static_cast<int>(kSize), offset);
    });
    // What is behind the end of the file is zeros then.
    const bool isRead = result == SQLITE_OK || result == SQLITE_IOERR_SHORT_READ;
    return isRead && !isSound(out, offset, *fileOf(file).check) ? SQLITE_IOERR_DATA : result;
}

int readPart(sqlite3_file* file, void* out, int size, sqlite3_int64 offset) noexcept {
    const sqlite3_int64 begin = offset % kSize;
    if (begin + size > kSize) {
        return SQLITE_IOERR_READ;
    }
    const Page& page = *fileOf(file).page;
    const int result = readPage(file, fileOf(file).page->data(), offset - begin);
    std::memcpy(out, page.data() + begin, static_cast<std::size_t>(size));
    return result;
}

int readFile(sqlite3_file* file, void* out, int size, sqlite3_int64 offset) noexcept {
    if (size == kSize && offset % kSize == 0) {
        return readPage(file, static_cast<char*>(out), offset);
    }
    if (offset + size > kHeaderSize) {
        return readPart(file, out, size, offset);
    }
    return forward(file,
                   [=](const auto& methods, auto* below) { return methods.xRead(below, out, size, offset); });
}

/// SQLite's own page stays as it is: it may be in use elsewhere, and the checksums of a log cover it.
int writeFile(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) noexcept {
    if (size != kSize || offset % kSize != 0) {
        return SQLITE_IOERR_WRITE;
    }
    char* const page = fileOf(file).page->data();
    std::memcpy(page, bytes, kPageSize);
    sealPage(page, numberAt(offset));
    return forward(
        file, [=](const auto& methods, auto* below) { return methods.xWrite(below, page, size, offset); });
}

/// No file system writes a page with its seal in one piece, and the journal is to be written as SealedJournal
/// knows it.
int characteristics(sqlite3_file* file) noexcept {
    constexpr int kAtomic = SQLITE_IOCAP_ATOMIC | SQLITE_IOCAP_ATOMIC512 | SQLITE_IOCAP_ATOMIC1K |
                            SQLITE_IOCAP_ATOMIC2K | SQLITE_IOCAP_ATOMIC4K | SQLITE_IOCAP_ATOMIC8K |
                            SQLITE_IOCAP_ATOMIC16K | SQLITE_IOCAP_ATOMIC32K | SQLITE_IOCAP_ATOMIC64K |
                            SQLITE_IOCAP_BATCH_ATOMIC | SQLITE_IOCAP_SAFE_APPEND;
    return characteristicsBelow(file) & ~kAtomic;
}

constexpr OwnCalls kOwn = {closeOver<SealedFile>, readFile, writeFile, characteristics};
constexpr sqlite3_io_methods kMethods = methodsOver(2, kOwn);
constexpr sqlite3_io_methods kMethodsWithoutLog = methodsOver(1, kOwn);

}  // namespace

int sealedFileSize(int sizeBelow) noexcept { return sizeOver<SealedFile>(sizeBelow); }

int openSealed(sqlite3_vfs& below, const char* path, sqlite3_file* out, int flags, int* given,
               const PageCheck& check) noexcept {
    const int result = openOver<SealedFile>(below, path, out, flags, given);
    if (result != SQLITE_OK) {
        return result;
    }
    if (!fileOf(out).page) {
        closeOver<SealedFile>(out);
        out->pMethods = nullptr;
        return SQLITE_NOMEM;
    }
    fileOf(out).check = &check;
    const bool hasLog = fileOf(out).below->pMethods->iVersion >= 2;
    out->pMethods = hasLog ? &kMethods : &kMethodsWithoutLog;
    return SQLITE_OK;
}

}  // namespace foundation::storage::sqlite
