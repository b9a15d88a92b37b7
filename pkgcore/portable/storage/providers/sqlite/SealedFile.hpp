#pragma once

struct sqlite3_file;
struct sqlite3_vfs;

namespace foundation::storage::sqlite {

/// What openSealed() needs of the memory for a file, together with the size of the file below.
int sealedFileSize(int sizeBelow) noexcept;

/// Opens the file of a store through the file system `below`, as its xOpen does, and puts itself in between:
/// each page gets its seal when it is written, and one that does not fit its seal when it is read is
/// SQLITE_IOERR_DATA. The log holds pages as SQLite has them, and is not opened so.
int openSealed(sqlite3_vfs& below, const char* path, sqlite3_file* out, int flags, int* given) noexcept;

}  // namespace foundation::storage::sqlite
