#include <pkgcore/portable/storage/providers/sqlite/Entries.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Connection.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Names.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>

#include <algorithm>
#include <chrono>

namespace foundation::storage::sqlite {

using provider::Kind;
using provider::Path;
using vfs::ErrorCode;

namespace {

/// In which the root stands, under the empty name.
constexpr std::int64_t kAboveRoot = 0;

/// The first name of a path, which goes on behind it.
std::u16string_view takeName(std::u16string_view& path) {
    const std::size_t end = std::min(path.find(u'/'), path.size());
    const std::u16string_view name = path.substr(0, end);
    path.remove_prefix(std::min(end + 1, path.size()));
    return name;
}

void append(std::string& bytes, std::int64_t number) {
    const NumberBytes part = bytesOf(number);
    bytes.append(part.data(), part.size());
}

}  // namespace

std::int64_t timeOfNow() {
    using std::chrono::microseconds;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<microseconds>(now).count();
}

/// Over everything that the row says.
std::int64_t Entries::sealOf(const Entry& entry) const {
    std::string bytes;
    bytes.reserve(5 * sizeof(NumberBytes) + entry.name.size());
    append(bytes, (entry.isFolder() ? 2 : 0) + (entry.isWritable ? 1 : 0));
    append(bytes, entry.modified);
    append(bytes, entry.size);
    append(bytes, entry.content);
    append(bytes, entry.id);
    bytes += entry.name;
    return connection_.sealer().seal(entry.parent, bytes);
}

template <typename Row>
void Entries::readRow(const Row& row, Entry& entry) const {
    const std::int64_t kind = row.integer(0);
    const std::int64_t writable = row.integer(1);
    entry.kind = kind == 1 ? Kind::Folder : Kind::File;
    entry.isWritable = writable == 1;
    entry.modified = row.integer(2);
    entry.size = row.integer(3);
    entry.content = row.integer(4);
    entry.id = row.integer(6);
    const bool isKnown = (kind == 0 || kind == 1) && (writable == 0 || writable == 1);
    if (!isKnown || row.integer(5) != sealOf(entry)) {
        failDamaged("an entry does not fit its checksum");
    }
}

std::optional<Entry> Entries::find(std::int64_t folder, std::string_view name) {
    Query row(connection_.statement(Sql::FindEntry), folder, name);
    if (!row.step()) {
        return std::nullopt;
    }
    return entryFrom(row, folder, name);
}

Entry Entries::entryFrom(const Query& row, std::int64_t folder, std::string_view name) const {
    Entry entry;
    entry.parent = folder;
    entry.name = name;
    readRow(row, entry);
    return entry;
}

std::optional<Entry> Entries::find(const Path& path) {
    if (path.isRoot()) {
        return find(kAboveRoot, {});
    }
    std::u16string_view rest = path.text();
    std::int64_t folder = kRootFolder;
    while (true) {
        std::optional<Entry> entry = find(folder, encodeName(takeName(rest)));
        if (!entry || rest.empty()) {
            return entry;
        }
        if (!entry->isFolder()) {
            return std::nullopt;
        }
        folder = entry->id;
    }
}

Entry Entries::require(const Path& path) {
    std::optional<Entry> entry = find(path);
    if (!entry) {
        fail(ErrorCode::NotFound);
    }
    return *std::move(entry);
}

Entry Entries::requireFolder(const Path& path) {
    Entry entry = require(path);
    if (!entry.isFolder()) {
        fail(ErrorCode::NotFound);
    }
    return entry;
}

/// Of something that is not there: whether the first thing above it that is there is a file.
bool Entries::isBelowFile(const Path& path) {
    Path above = path;
    while (!above.isRoot()) {
        above = above.parent();
        if (const std::optional<Entry> entry = find(above)) {
            return !entry->isFolder();
        }
    }
    failDamaged("it has no root");
}

Entry Entries::folderForCreation(const Path& path) {
    if (path.isRoot()) {
        fail(ErrorCode::AlreadyExists);
    }
    const Path parent = path.parent();
    std::optional<Entry> folder = find(parent);
    if (!folder) {
        fail(isBelowFile(parent) ? ErrorCode::AlreadyExists : ErrorCode::NotFound);
    }
    if (!folder->isFolder()) {
        fail(ErrorCode::AlreadyExists);
    }
    if (!folder->isWritable) {
        fail(ErrorCode::AccessDenied);
    }
    return *std::move(folder);
}

void Entries::requireGivesUp(const Path& path) {
    if (!require(path.parent()).isWritable) {
        fail(ErrorCode::AccessDenied);
    }
}

// Walks the folders of the tree only where any folder of the store is guarded at all.
void Entries::requireRemovable(const Entry& folder) {
    Query any(connection_.statement(Sql::GuardedFolders));
    if (!any.step()) {
        return;
    }
    Query tree(connection_.statement(Sql::GuardedTree), folder.id, std::int64_t{folder.isWritable});
    if (tree.step()) {
        fail(ErrorCode::AccessDenied);
    }
}

void Entries::put(const Entry& entry) {
    run(connection_.statement(Sql::PutEntry), entry.parent, std::string_view(entry.name),
        std::int64_t{entry.isFolder()}, std::int64_t{entry.isWritable}, entry.modified, entry.size,
        entry.content, sealOf(entry), entry.id);
}

void Entries::erase(const Entry& entry) {
    run(connection_.statement(Sql::EraseEntry), entry.parent, std::string_view(entry.name));
}

bool Entries::isEmpty(const Entry& folder) {
    Query any(connection_.statement(Sql::HasEntries), folder.id);
    return !any.step();
}

std::vector<Entry> Entries::listAfter(std::int64_t folder, std::string_view name, std::int64_t count) {
    std::vector<Entry> entries;
    std::string last(name);
    Query row(connection_.statement(Sql::ListEntries), folder, name, count);
    while (row.step()) {
        Entry entry;
        entry.parent = folder;
        entry.name = row.bytes(7);
        readRow(row, entry);
        if (entry.name <= last) {
            failDamaged("a folder is not in order");
        }
        last = entry.name;
        entries.push_back(std::move(entry));
    }
    return entries;
}

void Entries::makeRoot() {
    Entry root;
    root.parent = kAboveRoot;
    root.kind = Kind::Folder;
    root.modified = timeOfNow();
    root.id = kRootFolder;
    put(root);
}

}  // namespace foundation::storage::sqlite
