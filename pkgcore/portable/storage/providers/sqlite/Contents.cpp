#include <pkgcore/portable/storage/providers/sqlite/Contents.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Connection.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Entries.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>

#include <algorithm>

namespace foundation::storage::sqlite {

namespace {

constexpr std::int64_t kMaxIndex = (std::int64_t{1} << kChunkBits) - 1;

std::int64_t sealOf(const Connection& connection, const Orphan& orphan) {
    const std::string text =
        (orphan.kind == Orphan::Kind::Folder ? "folder " : "content ") + std::to_string(orphan.first);
    return connection.sealer().seal(orphan.number, text);
}

/// From the columns kind, first and seal, beginning with `column`.
Orphan orphanFrom(const Connection& connection, const Query& row, std::int64_t number, int column) {
    const Orphan orphan{number, row.integer(column) == 1 ? Orphan::Kind::Folder : Orphan::Kind::Content,
                        row.integer(column + 1)};
    if (row.integer(column + 2) != sealOf(connection, orphan)) {
        failDamaged("the list of what is to be erased");
    }
    return orphan;
}

}  // namespace

std::int64_t chunkId(std::int64_t content, std::int64_t index) {
    if (index > kMaxIndex) {
        fail(vfs::ErrorCode::FileTooLarge);
    }
    return content << kChunkBits | index;
}

bool isLarge(const Entry& file) noexcept { return !file.isFolder() && file.size >= kChunk; }

std::int64_t chunkCount(std::int64_t size) noexcept { return size / kChunk + (size % kChunk == 0 ? 0 : 1); }

std::int64_t Contents::putChunk(std::int64_t content, std::int64_t index, std::string_view bytes) {
    const std::int64_t id = chunkId(content, index);
    const std::int64_t seal = connection_.sealer().seal(id, bytes);
    run(connection_.statement(Sql::PutChunk), id, seal, bytes);
    return seal;
}

bool Contents::hasChunk(std::int64_t content, std::int64_t index, std::int64_t seal) {
    Query row(connection_.statement(Sql::ChunkSeal), chunkId(content, index));
    return row.step() && row.integer(0) == seal;
}

template <typename Take>
void Contents::takeChunk(std::int64_t content, std::int64_t index, std::size_t size, Take take) {
    const std::int64_t id = chunkId(content, index);
    const SealedRows rows(connection_);
    Query row(connection_.statement(Sql::ReadChunk), id);
    if (!row.step()) {
        failDamaged("a part of a content is missing");
    }
    take(chunkIn(row, 0, id, size));
}

std::string_view Contents::chunkIn(const Query& row, int column, std::int64_t id, std::size_t size) const {
    const std::string_view stored = row.bytes(column + 1);
    const bool isWhole = stored.size() >= size && stored.size() <= kChunkSize;
    if (!isWhole || row.integer(column) != connection_.sealer().seal(id, stored)) {
        connection_.forgetPages();  // or they would be taken for what is in the file
        failDamaged("a content does not fit its checksum");
    }
    return stored.substr(0, size);
}

void Contents::readChunk(std::int64_t content, std::int64_t index, char* out, std::size_t size) {
    takeChunk(content, index, size, [out](std::string_view chunk) { chunk.copy(out, chunk.size()); });
}

void Contents::readChunk(std::int64_t content, std::int64_t index, std::size_t size, std::string& bytes) {
    takeChunk(content, index, size, [&bytes](std::string_view chunk) { bytes = chunk; });
}

bool Contents::eraseLastChunks(std::int64_t content, std::int64_t first, std::int64_t count) {
    const std::int64_t begin = chunkId(content, first);
    std::int64_t last = 0;
    {
        Query row(connection_.statement(Sql::LastChunk), begin, chunkId(content, kMaxIndex));
        last = row.step() ? row.integer(0) : 0;
    }
    const std::int64_t from = std::max(begin, last - count + 1);
    if (last >= begin) {
        run(connection_.statement(Sql::EraseChunks), from, last);
    }
    return from == begin;
}

std::optional<Orphan> Contents::findOrphan(std::int64_t number) {
    Query row(connection_.statement(Sql::FindOrphan), number);
    return row.step() ? std::optional<Orphan>(orphanFrom(connection_, row, number, 0)) : std::nullopt;
}

std::optional<Orphan> Contents::lastOrphan(std::int64_t below) {
    Query row(connection_.statement(Sql::ListOrphans), below);
    return row.step() ? std::optional<Orphan>(orphanFrom(connection_, row, row.integer(0), 1)) : std::nullopt;
}

void Contents::putOrphan(const Orphan& orphan) {
    run(connection_.statement(Sql::PutOrphan), orphan.number,
        std::int64_t{orphan.kind == Orphan::Kind::Folder}, orphan.first, sealOf(connection_, orphan));
}

void Contents::eraseOrphan(std::int64_t number) { run(connection_.statement(Sql::EraseOrphan), number); }

bool Contents::retire(const Entry& entry) {
    if (entry.isFolder()) {
        putOrphan({entry.id, Orphan::Kind::Folder, 0});
        return true;
    }
    if (isLarge(entry)) {
        putOrphan({entry.content, Orphan::Kind::Content, 0});
        return true;
    }
    if (entry.content != kNoContent) {
        const std::int64_t id = chunkId(entry.content, 0);
        run(connection_.statement(Sql::EraseChunks), id, id);
    }
    return false;
}

}  // namespace foundation::storage::sqlite
