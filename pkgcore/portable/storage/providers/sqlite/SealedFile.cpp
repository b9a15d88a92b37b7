#include <pkgcore/portable/storage/providers/sqlite/SealedFile.hpp>

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

/// The file below lies behind it in memory.
struct SealedFile {
    sqlite3_file base;           ///< what SQLite sees
    std::unique_ptr<Page> page;  ///< what is being sealed, or read in part
    const PageCheck* check;

    sqlite3_file* below() noexcept { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

static_assert(sizeof(SealedFile) % alignof(sqlite3_int64) == 0, "the file below is aligned as this one");

SealedFile& fileOf(sqlite3_file* file) noexcept { return *reinterpret_cast<SealedFile*>(file); }

/// Makes the call on the file below.
template <typename Call>
auto forward(sqlite3_file* file, Call call) noexcept {
    sqlite3_file* const below = fileOf(file).below();
    return call(*below->pMethods, below);
}

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

int closeFile(sqlite3_file* file) noexcept {
    const int result = forward(file, [](const auto& methods, auto* below) { return methods.xClose(below); });
    fileOf(file).~SealedFile();
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

int truncateFile(sqlite3_file* file, sqlite3_int64 size) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xTruncate(below, size); });
}

int syncFile(sqlite3_file* file, int flags) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xSync(below, flags); });
}

int sizeOfFile(sqlite3_file* file, sqlite3_int64* size) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xFileSize(below, size); });
}

int lockFile(sqlite3_file* file, int lock) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xLock(below, lock); });
}

int unlockFile(sqlite3_file* file, int lock) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xUnlock(below, lock); });
}

int checkReserved(sqlite3_file* file, int* out) noexcept {
    return forward(file,
                   [=](const auto& methods, auto* below) { return methods.xCheckReservedLock(below, out); });
}

int controlFile(sqlite3_file* file, int verb, void* argument) noexcept {
    return forward(
        file, [=](const auto& methods, auto* below) { return methods.xFileControl(below, verb, argument); });
}

int sectorSize(sqlite3_file* file) noexcept {
    return forward(file, [](const auto& methods, auto* below) { return methods.xSectorSize(below); });
}

int characteristics(sqlite3_file* file) noexcept {
    return forward(file,
                   [](const auto& methods, auto* below) { return methods.xDeviceCharacteristics(below); });
}

int mapShared(sqlite3_file* file, int page, int size, int extend, void volatile** out) noexcept {
    return forward(file, [=](const auto& methods, auto* below) {
        return methods.xShmMap(below, page, size, extend, out);
    });
}

int lockShared(sqlite3_file* file, int offset, int count, int flags) noexcept {
    return forward(file, [=](const auto& methods, auto* below) {
        return methods.xShmLock(below, offset, count, flags);
    });
}

void sharedBarrier(sqlite3_file* file) noexcept {
    forward(file, [](const auto& methods, auto* below) { methods.xShmBarrier(below); });
}

int unmapShared(sqlite3_file* file, int erase) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xShmUnmap(below, erase); });
}

/// Version 2 is with the memory that the connections of a log share. Version 3 would map the pages of the
/// file into memory, past the seals.
constexpr sqlite3_io_methods methodsOfVersion(int version) noexcept {
    return {version,    closeFile,     readFile,      writeFile,   truncateFile, syncFile,        sizeOfFile,
            lockFile,   unlockFile,    checkReserved, controlFile, sectorSize,   characteristics, mapShared,
            lockShared, sharedBarrier, unmapShared,   nullptr,     nullptr};
}

constexpr sqlite3_io_methods kMethods = methodsOfVersion(2);
constexpr sqlite3_io_methods kMethodsWithoutLog = methodsOfVersion(1);

int openBelow(sqlite3_vfs& below, const char* path, SealedFile& file, int flags, int* given) noexcept {
    file.below()->pMethods = nullptr;
    const int result = below.xOpen(&below, path, file.below(), flags, given);
    const sqlite3_io_methods* const methods = file.below()->pMethods;
    if (result != SQLITE_OK && methods != nullptr) {
        methods->xClose(file.below());
    }
    return result;
}

}  // namespace

int sealedFileSize(int sizeBelow) noexcept { return static_cast<int>(sizeof(SealedFile)) + sizeBelow; }

int openSealed(sqlite3_vfs& below, const char* path, sqlite3_file* out, int flags, int* given,
               const PageCheck& check) noexcept {
    out->pMethods = nullptr;  // nothing to close
    std::unique_ptr<Page> page(new (std::nothrow) Page);
    if (!page) {
        return SQLITE_NOMEM;
    }
    auto* const file = new (out) SealedFile{{nullptr}, std::move(page), &check};
    const int result = openBelow(below, path, *file, flags, given);
    if (result != SQLITE_OK) {
        file->~SealedFile();
        out->pMethods = nullptr;
        return result;
    }
    const bool hasLog = file->below()->pMethods->iVersion >= 2;
    file->base.pMethods = hasLog ? &kMethods : &kMethodsWithoutLog;
    return SQLITE_OK;
}

}  // namespace foundation::storage::sqlite
