#pragma once

struct sqlite3_file;

namespace foundation::storage::sqlite {

/// Reads a journal from end to end: SQLITE_OK where what SQLite is going to bring back is what there was, and
/// kDamagedJournal where it is not, or where SQLite would stop too early and take that for the end. What a
/// killed process or a loss of power leaves is sound, with records that are cut off or missing where the
/// store was not touched yet.
///
/// `store` is the file that the journal is of, or null if nobody knows; nobody may be writing to it. With it,
/// a header is missed that became zeros. What cannot be known is that the journal was cut off at its
/// beginning, as it is by a commit, or right behind a segment.
int checkJournal(sqlite3_file& journal, sqlite3_file* store) noexcept;

/// The same, but SQLITE_OK as soon as it is certain that the journal is to be brought back; which is to be
/// checked whole by who does that.
int checkBeginning(sqlite3_file& journal, sqlite3_file* store) noexcept;

}  // namespace foundation::storage::sqlite
