#pragma once

struct sqlite3_file;
struct sqlite3_vfs;

namespace foundation::storage::sqlite {

/// What of a page is compared with its seal when it is read: the pages with the rests of long rows may go
/// with less if whoever reads the rows compares these with seals of their own.
enum class PageCheck : unsigned char { Whole, LinksOfLongRows };

/// What openSealed() needs of the memory for a file, together with the size of the file below.
int sealedFileSize(int sizeBelow) noexcept;

/// Opens the file of a store through the file system `below`, as its xOpen does, and puts itself in between:
/// each page gets its seal when it is written, and one that does not fit its seal when it is read is
/// SQLITE_IOERR_DATA. `check` is asked at each page and outlives the file. The log holds pages as SQLite has
/// them, and is not opened so.
int openSealed(sqlite3_vfs& below, const char* path, sqlite3_file* out, int flags, int* given,
               const PageCheck& check) noexcept;

}  // namespace foundation::storage::sqlite
