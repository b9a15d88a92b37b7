#include "tests/sqlite/FaultyVfs.hpp"

#include <cerrno>
#include <new>

namespace test {

namespace {

using Kind = VfsCall::Kind;

FaultyVfs* inForce = nullptr;
sqlite3_vfs* below = nullptr;

/// The file of the system lies behind it in memory.
struct File {
    sqlite3_file base;
    std::string path;

    sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

File& fileOf(sqlite3_file* file) { return *reinterpret_cast<File*>(file); }

int ask(const VfsCall& call) {
    const int result = inForce == nullptr ? SQLITE_OK : inForce->ask(call);
    if (result != SQLITE_OK) errno = EIO;
    return result;
}

/// Asks, and then makes the call on the file of the system.
template <typename Call>
int pass(sqlite3_file* file, VfsCall asked, Call call) {
    asked.path = fileOf(file).path;
    const int result = ask(asked);
    if (result != SQLITE_OK) return result;
    sqlite3_file* const real = fileOf(file).real();
    return call(*real->pMethods, real);
}

/// Makes the call without asking.
template <typename Call>
auto forward(sqlite3_file* file, Call call) {
    sqlite3_file* const real = fileOf(file).real();
    return call(*real->pMethods, real);
}

int closeFile(sqlite3_file* file) {
    const int result = forward(file, [](auto& methods, auto* real) { return methods.xClose(real); });
    fileOf(file).~File();
    return result;
}

int readFile(sqlite3_file* file, void* out, int size, sqlite3_int64 offset) {
    return pass(file, {Kind::Read, {}, nullptr, size, offset},
                [=](auto& methods, auto* real) { return methods.xRead(real, out, size, offset); });
}

int writeFile(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
    return pass(file, {Kind::Write, {}, bytes, size, offset},
                [=](auto& methods, auto* real) { return methods.xWrite(real, bytes, size, offset); });
}

int truncateFile(sqlite3_file* file, sqlite3_int64 size) {
    return pass(file, {Kind::Truncate, {}, nullptr, size, 0},
                [=](auto& methods, auto* real) { return methods.xTruncate(real, size); });
}

int syncFile(sqlite3_file* file, int flags) {
    return pass(file, {Kind::Sync, {}, nullptr, 0, 0},
                [=](auto& methods, auto* real) { return methods.xSync(real, flags); });
}

int sizeFile(sqlite3_file* file, sqlite3_int64* size) {
    return pass(file, {Kind::FileSize, {}, nullptr, 0, 0},
                [=](auto& methods, auto* real) { return methods.xFileSize(real, size); });
}

int lockFile(sqlite3_file* file, int lock) {
    return pass(file, {Kind::Lock, {}, nullptr, 0, 0},
                [=](auto& methods, auto* real) { return methods.xLock(real, lock); });
}

int unlockFile(sqlite3_file* file, int lock) {
    return forward(file, [=](auto& methods, auto* real) { return methods.xUnlock(real, lock); });
}

int checkReserved(sqlite3_file* file, int* out) {
    return forward(file, [=](auto& methods, auto* real) { return methods.xCheckReservedLock(real, out); });
}

int controlFile(sqlite3_file* file, int verb, void* argument) {
    return forward(file,
                   [=](auto& methods, auto* real) { return methods.xFileControl(real, verb, argument); });
}

int sectorSize(sqlite3_file* file) {
    return forward(file, [](auto& methods, auto* real) { return methods.xSectorSize(real); });
}

int characteristics(sqlite3_file* file) {
    return forward(file, [](auto& methods, auto* real) { return methods.xDeviceCharacteristics(real); });
}

int mapShared(sqlite3_file* file, int page, int size, int extend, void volatile** out) {
    return pass(file, {Kind::MapShared, {}, nullptr, 0, 0},
                [=](auto& methods, auto* real) { return methods.xShmMap(real, page, size, extend, out); });
}

int lockShared(sqlite3_file* file, int offset, int count, int flags) {
    const auto lock = [=](auto& methods, auto* real) { return methods.xShmLock(real, offset, count, flags); };
    return (flags & SQLITE_SHM_UNLOCK) != 0 ? forward(file, lock)
                                            : pass(file, {Kind::LockShared, {}, nullptr, 0, 0}, lock);
}

void sharedBarrier(sqlite3_file* file) {
    forward(file, [](auto& methods, auto* real) { methods.xShmBarrier(real); });
}

int unmapShared(sqlite3_file* file, int erase) {
    return forward(file, [=](auto& methods, auto* real) { return methods.xShmUnmap(real, erase); });
}

constexpr sqlite3_io_methods kMethods = {
    2,          closeFile,     readFile,      writeFile,   truncateFile, syncFile,        sizeFile,
    lockFile,   unlockFile,    checkReserved, controlFile, sectorSize,   characteristics, mapShared,
    lockShared, sharedBarrier, unmapShared,   nullptr,     nullptr};

int openFile(sqlite3_vfs* /*vfs*/, const char* path, sqlite3_file* out, int flags, int* given) {
    out->pMethods = nullptr;  // nothing to close
    const std::string name = path == nullptr ? "" : path;
    const int refused = ask({Kind::Open, name, nullptr, 0, 0});
    if (refused != SQLITE_OK) return refused;
    File* const file = new (out) File{{}, name};
    const int result = below->xOpen(below, path, file->real(), flags, given);
    if (result == SQLITE_OK) {
        file->base.pMethods = &kMethods;
    } else {
        file->~File();
        out->pMethods = nullptr;
    }
    return result;
}

int deleteFile(sqlite3_vfs* /*vfs*/, const char* path, int syncFolder) {
    const int refused = ask({Kind::Delete, path, nullptr, syncFolder, 0});
    return refused != SQLITE_OK ? refused : below->xDelete(below, path, syncFolder);
}

}  // namespace

// Everything else is done by the functions of the system's own, which look at their argument for nothing but
// what is copied.
FaultyVfs::FaultyVfs() : vfs_(*sqlite3_vfs_find(nullptr)) {
    below = sqlite3_vfs_find(nullptr);
    inForce = this;
    vfs_.zName = "faulty";
    vfs_.szOsFile = static_cast<int>(sizeof(File)) + below->szOsFile;
    vfs_.xOpen = openFile;
    vfs_.xDelete = deleteFile;
    sqlite3_vfs_register(&vfs_, 1);
}

FaultyVfs::~FaultyVfs() {
    sqlite3_vfs_unregister(&vfs_);
    sqlite3_vfs_register(below, 1);
    inForce = nullptr;
}

}  // namespace test
