#pragma once

namespace foundation::storage::sqlite {

class Connection;

/// Makes zeros of those free pages of a store that do not fit their seals. SQLite brings none of what is in
/// them back after a crash, so that half of one may be what a loss of power left; to make the file smaller,
/// it reads them all. Throws what the store throws, "damaged" where the list of free pages is.
/// Where a write-ahead log cannot be emptied, since others are reading, it does nothing.
void mendFreePages(Connection& connection);

}  // namespace foundation::storage::sqlite
