#pragma once

#include <sqlite3.h>

#include <new>

namespace foundation::storage::sqlite {

/// A file of SQLite's that lies over another one. What it does not do itself it passes on.
struct LayeredFile : sqlite3_file {
    LayeredFile() noexcept : sqlite3_file{} {}

    sqlite3_file* below = nullptr;  ///< behind it in memory
};

/// Makes the call on the file below.
template <typename Call>
auto forward(sqlite3_file* file, Call call) noexcept {
    sqlite3_file* const below = static_cast<LayeredFile*>(file)->below;
    return call(*below->pMethods, below);
}

/// Each is the call of its name, on the file below.
/// @{
int truncateBelow(sqlite3_file* file, sqlite3_int64 size) noexcept;
int syncBelow(sqlite3_file* file, int flags) noexcept;
int sizeBelow(sqlite3_file* file, sqlite3_int64* size) noexcept;
int lockBelow(sqlite3_file* file, int lock) noexcept;
int unlockBelow(sqlite3_file* file, int lock) noexcept;
int checkReservedBelow(sqlite3_file* file, int* out) noexcept;
int controlBelow(sqlite3_file* file, int verb, void* argument) noexcept;
int sectorSizeBelow(sqlite3_file* file) noexcept;
int characteristicsBelow(sqlite3_file* file) noexcept;
int mapSharedBelow(sqlite3_file* file, int page, int size, int extend, void volatile** out) noexcept;
int lockSharedBelow(sqlite3_file* file, int offset, int count, int flags) noexcept;
void sharedBarrierBelow(sqlite3_file* file) noexcept;
int unmapSharedBelow(sqlite3_file* file, int erase) noexcept;
/// @}

/// What every file over another one does itself.
struct OwnCalls {
    int (*close)(sqlite3_file*);
    int (*read)(sqlite3_file*, void*, int, sqlite3_int64);
    int (*write)(sqlite3_file*, const void*, int, sqlite3_int64);
    int (*characteristics)(sqlite3_file*) = characteristicsBelow;
};

/// Version 2 is with the memory that the connections of a log share. Version 3 would map the pages of the
/// file into memory, past who looks at them.
constexpr sqlite3_io_methods methodsOver(int version, const OwnCalls& own) noexcept {
    return {version,
            own.close,
            own.read,
            own.write,
            truncateBelow,
            syncBelow,
            sizeBelow,
            lockBelow,
            unlockBelow,
            checkReservedBelow,
            controlBelow,
            sectorSizeBelow,
            own.characteristics,
            mapSharedBelow,
            lockSharedBelow,
            sharedBarrierBelow,
            unmapSharedBelow,
            nullptr,
            nullptr};
}

/// Opens the file below, of which nothing is left open on failure.
int openBelow(sqlite3_vfs& vfs, const char* path, sqlite3_file* file, int flags, int* given) noexcept;

/// How much memory a file takes, with the one below.
template <typename File>
constexpr int sizeOver(int sizeBelow) noexcept {
    static_assert(sizeof(File) % alignof(sqlite3_int64) == 0, "the file below is aligned as this one");
    return static_cast<int>(sizeof(File)) + sizeBelow;
}

/// Makes a file in the memory for it, and opens the one below; on failure nothing is to be closed.
template <typename File>
int openOver(sqlite3_vfs& vfs, const char* path, sqlite3_file* out, int flags, int* given) noexcept {
    auto* const file = new (out) File;
    file->below = reinterpret_cast<sqlite3_file*>(file + 1);
    const int result = openBelow(vfs, path, file->below, flags, given);
    if (result != SQLITE_OK) {
        file->~File();
        out->pMethods = nullptr;
    }
    return result;
}

/// Closes the file below, and ends the one over it.
template <typename File>
int closeOver(sqlite3_file* file) noexcept {
    const int result = forward(file, [](const auto& methods, auto* below) { return methods.xClose(below); });
    static_cast<File*>(file)->~File();
    return result;
}

}  // namespace foundation::storage::sqlite
