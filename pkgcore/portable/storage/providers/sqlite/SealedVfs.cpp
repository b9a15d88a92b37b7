#include <pkgcore/portable/storage/providers/sqlite/SealedVfs.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/SealedFile.hpp>
#include <pkgcore/portable/storage/providers/sqlite/SealedJournal.hpp>

#include <algorithm>
#include <cstdint>
#include <new>

namespace foundation::storage::sqlite {

namespace {

SealedVfs& ownerOf(sqlite3_vfs* vfs) noexcept { return *static_cast<SealedVfs*>(vfs->pAppData); }

sqlite3_vfs& below(sqlite3_vfs* vfs) noexcept { return ownerOf(vfs).below(); }

int openFile(sqlite3_vfs* vfs, const char* path, sqlite3_file* out, int flags, int* given) noexcept {
    if ((flags & SQLITE_OPEN_MAIN_DB) != 0) {
        return openSealed(below(vfs), path, out, flags, given, ownerOf(vfs).check());
    }
    if ((flags & SQLITE_OPEN_MAIN_JOURNAL) != 0) {
        return openSealedJournal(below(vfs), path, out, flags, given);
    }
    return below(vfs).xOpen(&below(vfs), path, out, flags, given);
}

int deleteFile(sqlite3_vfs* vfs, const char* path, int syncFolder) noexcept {
    return below(vfs).xDelete(&below(vfs), path, syncFolder);
}

int accessFile(sqlite3_vfs* vfs, const char* path, int flags, int* out) noexcept {
    return below(vfs).xAccess(&below(vfs), path, flags, out);
}

int fullPath(sqlite3_vfs* vfs, const char* path, int size, char* out) noexcept {
    return below(vfs).xFullPathname(&below(vfs), path, size, out);
}

int randomness(sqlite3_vfs* vfs, int size, char* out) noexcept {
    return below(vfs).xRandomness(&below(vfs), size, out);
}

int sleepFor(sqlite3_vfs* vfs, int microseconds) noexcept {
    return below(vfs).xSleep(&below(vfs), microseconds);
}

int currentTime(sqlite3_vfs* vfs, double* out) noexcept { return below(vfs).xCurrentTime(&below(vfs), out); }

int currentTimeInt64(sqlite3_vfs* vfs, sqlite3_int64* out) noexcept {
    return below(vfs).xCurrentTimeInt64(&below(vfs), out);
}

int lastError(sqlite3_vfs* vfs, int size, char* out) noexcept {
    return below(vfs).xGetLastError == nullptr ? 0 : below(vfs).xGetLastError(&below(vfs), size, out);
}

/// No store loads extensions, and nothing of the later versions of the interface is needed.
sqlite3_vfs vfsOf(SealedVfs& owner) noexcept {
    const sqlite3_vfs& below = owner.below();
    sqlite3_vfs vfs = {};
    vfs.iVersion = std::min(below.iVersion, 2);
    vfs.szOsFile = std::max(sealedFileSize(below.szOsFile), sealedJournalSize(below.szOsFile));
    vfs.mxPathname = below.mxPathname;
    vfs.zName = owner.name();
    vfs.pAppData = &owner;
    vfs.xOpen = openFile;
    vfs.xDelete = deleteFile;
    vfs.xAccess = accessFile;
    vfs.xFullPathname = fullPath;
    vfs.xRandomness = randomness;
    vfs.xSleep = sleepFor;
    vfs.xCurrentTime = currentTime;
    vfs.xGetLastError = lastError;
    vfs.xCurrentTimeInt64 =
        below.iVersion >= 2 && below.xCurrentTimeInt64 != nullptr ? currentTimeInt64 : nullptr;
    return vfs;
}

}  // namespace

sqlite3_vfs& defaultVfs() {
    sqlite3_vfs* const found = sqlite3_vfs_find(nullptr);
    if (found == nullptr) {
        fail(vfs::ErrorCode::IOError, "SQLite has no file system");
    }
    return *found;
}

SealedVfs::SealedVfs()
    : name_("pkgcore-" + std::to_string(reinterpret_cast<std::uintptr_t>(this))),
      below_(defaultVfs()),
      vfs_(vfsOf(*this)) {
    if (sqlite3_vfs_register(&vfs_, 0) != SQLITE_OK) {
        throw std::bad_alloc();  // nothing else keeps it from being known
    }
}

SealedVfs::~SealedVfs() { sqlite3_vfs_unregister(&vfs_); }

}  // namespace foundation::storage::sqlite
