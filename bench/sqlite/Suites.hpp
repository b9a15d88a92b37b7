#pragma once

#include "bench/support/Suite.hpp"

namespace bench {

/// Says which SQLite this is and which journal the stores have.
void describeSqlite();

/// Many small files, one after the other.
void measureSqliteReading(Session& session);
void measureSqliteWriting(Session& session);

/// One large file.
void measureSqliteSequence(Session& session);

/// Folders that get another name.
void measureSqliteMoves(Session& session);

}  // namespace bench
