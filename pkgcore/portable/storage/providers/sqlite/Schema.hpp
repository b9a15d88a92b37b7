#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace foundation::storage::sqlite {

class Connection;

/// The layout of a store, described in docs/providers/sqlite.md.

/// "pkgc"; the mark in the header of the file by which a store is known.
inline constexpr std::uint32_t kApplicationId = 0x706B6763;
/// Changes whenever an older library must not use the store.
inline constexpr std::uint32_t kVersion = 1;

/// A content is cut into chunks of this size, the last one shorter.
inline constexpr std::size_t kChunkSize = std::size_t{64} * 1024;
/// The same among numbers of the database.
inline constexpr auto kChunk = static_cast<std::int64_t>(kChunkSize);

/// The number of a chunk is that of its content and, in the lower bits, its place.
inline constexpr int kChunkBits = 28;
inline constexpr std::int64_t kMaxNumber = (std::int64_t{1} << (62 - kChunkBits)) - 1;
/// What its chunks can be numbered for; a store is full somewhat earlier.
inline constexpr std::uint64_t kMaxFileSize = kChunkSize << kChunkBits;

/// How many bytes of a content of this size are in this one of its chunks.
constexpr std::size_t sizeOfChunk(std::int64_t size, std::int64_t index) noexcept {
    return static_cast<std::size_t>(std::min(kChunk, size - index * kChunk));
}

inline constexpr std::int64_t kNone = 0;
inline constexpr std::int64_t kNoContent = kNone;
inline constexpr std::int64_t kRootFolder = 1;

/// What the store says of itself.
struct StoreRow {
    std::int64_t key;   ///< goes into every seal
    std::int64_t next;  ///< the first number that was never given to an entry or a content
};

/// Makes the tables of a store, with an empty root, in a database without any.
void createSchema(Connection& connection);

/// Writes the version to the header of the file, where it stands already.
void markVersion(Connection& connection);

/// Throws "damaged" unless the tables are those of a store; within a transaction.
void checkSchema(Connection& connection);

/// Throws "damaged" for a row that does not fit its seal.
StoreRow readStoreRow(Connection& connection);
void writeNextNumber(Connection& connection, std::int64_t next);

}  // namespace foundation::storage::sqlite
