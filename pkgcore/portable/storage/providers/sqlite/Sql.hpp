#pragma once

#include <cstddef>

namespace foundation::storage::sqlite {

/// The statements that a connection prepares once and keeps.
enum class Sql : unsigned char {
    BeginRead,
    BeginWrite,
    Commit,
    Rollback,
    StoreRow,
    SetNext,
    FindEntry,
    FindFile,
    PutEntry,
    EraseEntry,
    ListEntries,
    HasEntries,
    GuardedFolders,
    GuardedTree,
    ReadChunk,
    PutChunk,
    ChunkSeal,
    LastChunk,
    EraseChunks,
    FindOrphan,
    PutOrphan,
    EraseOrphan,
    ListOrphans,
    Count
};

inline constexpr auto kSqlCount = static_cast<std::size_t>(Sql::Count);

const char* textOf(Sql sql) noexcept;

}  // namespace foundation::storage::sqlite
