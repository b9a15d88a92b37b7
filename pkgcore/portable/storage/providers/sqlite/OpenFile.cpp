#include <pkgcore/portable/storage/providers/sqlite/OpenFile.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Contents.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Lookup.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Sweep.hpp>

#include <algorithm>

namespace foundation::storage::sqlite {

namespace {

/// So many chunks are read in one transaction, which keeps others from committing.
constexpr std::size_t kReadAtOnce = 16;

bool isSmallFile(const Entry& entry) noexcept { return !entry.isFolder() && !isLarge(entry); }

/// With the content, if that is in one row.
std::optional<Entry> findWithContent(Connection& connection, std::int64_t folder, std::string_view name,
                                     std::string& bytes) {
    const SealedRows rows(connection);
    Query row(connection.statement(Sql::FindFile), folder, name);
    if (!row.step()) {
        return std::nullopt;
    }
    Entry entry = Entries(connection).entryFrom(row, folder, name);
    if (isSmallFile(entry) && entry.size > 0) {
        constexpr int kBehindEntry = 7;
        bytes = Contents(connection)
                    .chunkIn(row, kBehindEntry, chunkId(entry.content, 0), sizeOfChunk(entry.size, 0));
    }
    return entry;
}

Entry requireFile(Connection& connection, const provider::Path& path) {
    std::optional<Entry> entry = findAndRemember(connection, path);
    if (!entry || entry->isFolder()) {
        fail(vfs::ErrorCode::NotFound);
    }
    return *std::move(entry);
}

bool isSameContent(const Entry& one, const Entry& other) noexcept {
    return one.content == other.content && one.size == other.size;
}

}  // namespace

/// A content of one row is read at once. A larger one is pinned, and then looked for again: what is still
/// there then stays as long as the pin does.
template <typename Find>
bool OpenFile::open(Find find) {
    const auto look = [&](Connection& connection) {
        std::optional<Entry> found = find(connection);
        if (found && !isLarge(*found) && found->size > 0) {
            Contents(connection).readChunk(found->content, 0, sizeOfChunk(found->size, 0), bytes_);
            index_ = 0;
        }
        return found;
    };
    std::optional<Entry> found = store_->read(look);
    while (found && isLarge(*found)) {
        pin_ = store_->pins().pin(found->content);
        entry_ = *std::move(found);
        found = store_->read(look);
        if (found && isSameContent(*found, entry_)) {
            break;
        }
        letGo();
    }
    if (!found) {
        return false;
    }
    entry_ = *std::move(found);
    return true;
}

/// A small file in a folder that is known.
bool OpenFile::openAtOnce(const provider::Path& path) {
    std::optional<Entry> found;
    const auto look = [&](Connection& connection) {
        return lookInKnownFolder(connection, path, [&](std::int64_t folder, const std::string& name) {
            found = findWithContent(connection, folder, name, bytes_);
        });
    };
    if (!store_->look(look) || !found || !isSmallFile(*found)) {
        return false;
    }
    index_ = found->size > 0 ? 0 : -1;
    entry_ = *std::move(found);
    return true;
}

// The destructor lets go what is pinned when this throws, since another constructor is done by then.
OpenFile::OpenFile(SharedStore store, const provider::Path& path) : OpenFile(std::move(store)) {
    if (!openAtOnce(path)) {
        open([&path](Connection& connection) { return std::optional<Entry>(requireFile(connection, path)); });
    }
}

OpenFile::~OpenFile() { letGo(); }

/// Whoever made an orphan of it has left it in the store for the sake of the pin.
void OpenFile::letGo() noexcept {
    if (pin_.isHeld()) {
        pin_.release();
        sweepContent(*store_, entry_.content);
    }
}

template <typename Find>
std::optional<OpenFile> OpenFile::openIfThere(const SharedStore& store, Find find) {
    OpenFile file(store);
    const bool isThere = file.open([&find](Connection& connection) {
        Entries entries(connection);
        std::optional<Entry> found = find(entries);
        return found && !found->isFolder() ? found : std::nullopt;
    });
    return isThere ? std::optional<OpenFile>(std::move(file)) : std::nullopt;
}

std::optional<OpenFile> OpenFile::ifThere(const SharedStore& store, const provider::Path& path) {
    return openIfThere(store, [&path](Entries& entries) { return entries.find(path); });
}

std::optional<OpenFile> OpenFile::ofEntry(const SharedStore& store, const Entry& entry) {
    return openIfThere(store, [&entry](Entries& entries) { return entries.find(entry.parent, entry.name); });
}

const std::string& OpenFile::chunk(std::int64_t index) {
    if (index != index_) {
        index_ = -1;  // nothing, if reading fails
        store_->read([&](Connection& connection) {
            Contents(connection).readChunk(entry_.content, index, sizeOfChunk(entry_.size, index), bytes_);
        });
        index_ = index;
    }
    return bytes_;
}

/// Full chunks, each of them to where it is wanted; 0 if not even one is.
std::size_t OpenFile::readFull(std::int64_t index, char* out, std::size_t count) {
    const std::size_t chunks = std::min(count / kChunkSize, kReadAtOnce);
    if (chunks > 0) {
        store_->read([&](Connection& connection) {
            Contents contents(connection);
            for (std::size_t i = 0; i < chunks; ++i) {
                contents.readChunk(entry_.content, index++, out + i * kChunkSize, kChunkSize);
            }
        });
    }
    return chunks * kChunkSize;
}

/// A part of a chunk.
std::size_t OpenFile::readPart(std::int64_t index, std::size_t start, char* out, std::size_t count) {
    return chunk(index).copy(out, count, start);
}

std::size_t OpenFile::readAt(std::uint64_t offset, char* out, std::size_t count) {
    if (offset >= size()) {
        return 0;
    }
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, size() - offset));
    std::size_t done = 0;
    while (done < wanted) {
        const std::uint64_t at = offset + done;
        const auto index = static_cast<std::int64_t>(at / kChunkSize);
        const auto start = static_cast<std::size_t>(at % kChunkSize);
        const std::size_t full = start == 0 ? readFull(index, out + done, wanted - done) : 0;
        done += full > 0 ? full : readPart(index, start, out + done, wanted - done);
    }
    return done;
}

}  // namespace foundation::storage::sqlite
