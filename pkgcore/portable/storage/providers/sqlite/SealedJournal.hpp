#pragma once

struct sqlite3_file;
struct sqlite3_vfs;

namespace foundation::storage::sqlite {

/// What openSealedJournal() needs of the memory for a file, together with the size of the file below.
int sealedJournalSize(int sizeBelow) noexcept;

/// Opens the rollback journal of a store through the file system `below`, as its xOpen does, and puts itself
/// in between: each page in it and each header get a seal, and a journal that a process has left behind is
/// read whole before SQLite believes any of it. See JournalFormat.hpp; what does not fit is kDamagedJournal,
/// and then nothing is changed.
int openSealedJournal(sqlite3_vfs& below, const char* path, sqlite3_file* out, int flags,
                      int* given) noexcept;

}  // namespace foundation::storage::sqlite
