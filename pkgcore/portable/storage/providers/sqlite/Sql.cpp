#include <pkgcore/portable/storage/providers/sqlite/Sql.hpp>

namespace foundation::storage::sqlite {

namespace {

/// Beside what FindEntry gives, the row with the content if there is but one.
constexpr const char* kFindFile =
    "SELECT e.kind, e.writable, e.modified, e.size, e.content, e.seal, e.id, c.seal, c.bytes FROM entry e "
    "LEFT JOIN chunk c ON c.id = CASE WHEN e.size < 65536 THEN e.content << 28 END "
    "WHERE e.parent = ?1 AND e.name = ?2";

/// Not UNION ALL: rows that are damaged may go round in a circle.
constexpr const char* kGuardedTree =
    "WITH RECURSIVE tree(id, writable) AS (SELECT ?1, ?2 UNION SELECT e.id, e.writable "
    "FROM tree JOIN entry e ON e.parent = tree.id WHERE e.kind = 1) "
    "SELECT 1 FROM tree WHERE writable = 0 AND EXISTS (SELECT 1 FROM entry WHERE parent = tree.id) LIMIT 1";

}  // namespace

const char* textOf(Sql sql) noexcept {
    switch (sql) {
        case Sql::BeginRead:
            return "BEGIN";
        case Sql::BeginWrite:
            return "BEGIN IMMEDIATE";
        case Sql::Commit:
            return "COMMIT";
        case Sql::Rollback:
            return "ROLLBACK";
        case Sql::StoreRow:
            return "SELECT key, next, seal FROM store";
        case Sql::SetNext:
            return "UPDATE store SET next = ?1, seal = ?2";
        case Sql::FindEntry:
            return "SELECT kind, writable, modified, size, content, seal, id FROM entry "
                   "WHERE parent = ?1 AND name = ?2";
        case Sql::FindFile:
            return kFindFile;
        case Sql::PutEntry:
            return "REPLACE INTO entry(parent, name, kind, writable, modified, size, content, seal, id) "
                   "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)";
        case Sql::EraseEntry:
            return "DELETE FROM entry WHERE parent = ?1 AND name = ?2";
        case Sql::ListEntries:
            return "SELECT kind, writable, modified, size, content, seal, id, name FROM entry "
                   "WHERE parent = ?1 AND name > ?2 ORDER BY name LIMIT ?3";
        case Sql::HasEntries:
            return "SELECT 1 FROM entry WHERE parent = ?1 LIMIT 1";
        case Sql::GuardedFolders:
            return "SELECT 1 FROM entry WHERE kind = 1 AND writable = 0 LIMIT 1";
        case Sql::GuardedTree:
            return kGuardedTree;
        case Sql::ReadChunk:
            return "SELECT seal, bytes FROM chunk WHERE id = ?1";
        case Sql::PutChunk:
            return "REPLACE INTO chunk(id, seal, bytes) VALUES(?1, ?2, ?3)";
        case Sql::ChunkSeal:
            return "SELECT seal FROM chunk WHERE id = ?1";
        case Sql::LastChunk:
            return "SELECT max(id) FROM chunk WHERE id >= ?1 AND id <= ?2";
        case Sql::EraseChunks:
            return "DELETE FROM chunk WHERE id >= ?1 AND id <= ?2";
        case Sql::FindOrphan:
            return "SELECT kind, first, seal FROM orphan WHERE number = ?1";
        case Sql::PutOrphan:
            return "REPLACE INTO orphan(number, kind, first, seal) VALUES(?1, ?2, ?3, ?4)";
        case Sql::EraseOrphan:
            return "DELETE FROM orphan WHERE number = ?1";
        case Sql::ListOrphans:
            return "SELECT number, kind, first, seal FROM orphan WHERE number < ?1 ORDER BY number DESC "
                   "LIMIT 1";
        case Sql::Count:
            break;
    }
    return "";
}

}  // namespace foundation::storage::sqlite
