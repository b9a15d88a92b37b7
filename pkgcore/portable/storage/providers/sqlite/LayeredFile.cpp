#include <pkgcore/portable/storage/providers/sqlite/LayeredFile.hpp>

namespace foundation::storage::sqlite {

int truncateBelow(sqlite3_file* file, sqlite3_int64 size) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xTruncate(below, size); });
}

int syncBelow(sqlite3_file* file, int flags) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xSync(below, flags); });
}

int sizeBelow(sqlite3_file* file, sqlite3_int64* size) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xFileSize(below, size); });
}

int lockBelow(sqlite3_file* file, int lock) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xLock(below, lock); });
}

int unlockBelow(sqlite3_file* file, int lock) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xUnlock(below, lock); });
}

int checkReservedBelow(sqlite3_file* file, int* out) noexcept {
    return forward(file,
                   [=](const auto& methods, auto* below) { return methods.xCheckReservedLock(below, out); });
}

int controlBelow(sqlite3_file* file, int verb, void* argument) noexcept {
    return forward(
        file, [=](const auto& methods, auto* below) { return methods.xFileControl(below, verb, argument); });
}

int sectorSizeBelow(sqlite3_file* file) noexcept {
    return forward(file, [](const auto& methods, auto* below) { return methods.xSectorSize(below); });
}

int characteristicsBelow(sqlite3_file* file) noexcept {
    return forward(file,
                   [](const auto& methods, auto* below) { return methods.xDeviceCharacteristics(below); });
}

int mapSharedBelow(sqlite3_file* file, int page, int size, int extend, void volatile** out) noexcept {
    return forward(file, [=](const auto& methods, auto* below) {
        return methods.xShmMap(below, page, size, extend, out);
    });
}

int lockSharedBelow(sqlite3_file* file, int offset, int count, int flags) noexcept {
    return forward(file, [=](const auto& methods, auto* below) {
        return methods.xShmLock(below, offset, count, flags);
    });
}

void sharedBarrierBelow(sqlite3_file* file) noexcept {
    forward(file, [](const auto& methods, auto* below) { methods.xShmBarrier(below); });
}

int unmapSharedBelow(sqlite3_file* file, int erase) noexcept {
    return forward(file, [=](const auto& methods, auto* below) { return methods.xShmUnmap(below, erase); });
}

int openBelow(sqlite3_vfs& vfs, const char* path, sqlite3_file* file, int flags, int* given) noexcept {
    file->pMethods = nullptr;
    const int result = vfs.xOpen(&vfs, path, file, flags, given);
    const sqlite3_io_methods* const methods = file->pMethods;
    if (result != SQLITE_OK && methods != nullptr) {
        methods->xClose(file);
    }
    return result;
}

}  // namespace foundation::storage::sqlite
