#include <pkgcore/portable/storage/providers/sqlite/Copies.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Changes.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Contents.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Draft.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Names.hpp>
#include <pkgcore/portable/storage/providers/sqlite/OpenFile.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Sweep.hpp>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace foundation::storage::sqlite {

using provider::Kind;
using provider::Path;
using provider::ReplacementPolicy;

namespace {

/// So many entries are copied in one transaction.
constexpr std::int64_t kCopiedAtOnce = 64;

/// Of a copy that is being made.
constexpr std::u16string_view kTopName = u"copy";

void copyFile(const SharedStore& store, const Path& from, const Path& to, ReplacementPolicy policy) {
    OpenFile source(store, from);
    Draft draft(store);
    draft.copyFrom(source);
    draft.publish([&](Entries& entries) {
        Place place = placeFor(entries, to, Kind::File, policy);
        place.isWritable = source.entry().isWritable;
        return place;
    });
}

/// The bytes of a content in one row, as those of the copy.
void copyBytes(Connection& connection, std::int64_t from, const Entry& copy) {
    if (copy.size == 0) {
        return;
    }
    Contents contents(connection);
    std::string bytes;
    contents.readChunk(from, 0, static_cast<std::size_t>(copy.size), bytes);
    contents.putChunk(copy.content, 0, bytes);
}

/// A copy of a folder that is being made where nobody looks: as the one entry of an orphaned folder, its
/// cradle. Sweeping begins with that entry, so that while it is there the copy is whole. Holds the way down
/// in memory, and a page of entries.
class TreeCopy {
public:
    explicit TreeCopy(SharedStore store) : store_(std::move(store)) { makeTop(); }
    ~TreeCopy() {
        if (!isPublished_) {
            pin_.release();
            sweep(*store_);
        }
    }
    TreeCopy(const TreeCopy&) = delete;
    TreeCopy& operator=(const TreeCopy&) = delete;

    void fill(const Entry& source);
    void publish(const Path& from, const Entry& source, const Path& to, ReplacementPolicy policy);

private:
    /// A folder that is being copied, up to the entry with this name.
    struct Level {
        Entry from;
        std::int64_t to;
        std::string last;
    };

    void makeTop();
    Entry requireTop(Entries& entries) const;
    bool fillSome();
    void beginAgain();
    void copyNext(const std::vector<Entry>& page);
    std::optional<Level> copyPage(Connection& connection, const std::vector<Entry>& page, std::int64_t to,
                                  std::vector<Entry>& large);
    void copyLarge(const Entry& source, std::int64_t to);

    SharedStore store_;
    std::int64_t cradle_ = 0;
    std::int64_t top_ = 0;
    Pin pin_;
    bool isPublished_ = false;
    std::vector<Level> levels_;
};

void TreeCopy::makeTop() {
    store_->write([this](Connection& connection) {
        cradle_ = connection.newNumber();
        top_ = connection.newNumber();
        pin_ = store_->pins().pin(cradle_);
        Contents(connection).putOrphan({cradle_, Orphan::Kind::Folder, 0});
        Entries(connection)
            .put({cradle_, encodeName(kTopName), top_, Kind::Folder, true, timeOfNow(), 0, kNoContent});
    });
}

/// The pin keeps it; but not everybody may see that.
Entry TreeCopy::requireTop(Entries& entries) const {
    std::optional<Entry> top = entries.find(cradle_, encodeName(kTopName));
    if (!top) {
        failSwept();
    }
    return *std::move(top);
}

void TreeCopy::fill(const Entry& source) {
    levels_.push_back({source, top_, {}});
    while (!levels_.empty()) {
        if (!fillSome()) levels_.pop_back();
    }
}

bool isThere(Entries& entries, const Entry& folder) {
    const std::optional<Entry> found = entries.find(folder.parent, folder.name);
    return found && found->id == folder.id;
}

/// One page of the innermost folder, up to its first folder, which becomes the innermost. False at its end,
/// which is that of all of it only if it is still there: what was removed is swept in pieces.
bool TreeCopy::fillSome() {
    const Level& level = levels_.back();
    std::vector<Entry> page;
    const bool isWhole = store_->read([&](Connection& connection) {
        Entries entries(connection);
        page = entries.listAfter(level.from.id, level.last, kCopiedAtOnce);
        return isThere(entries, level.from);
    });
    if (!isWhole && levels_.size() > 1) {
        beginAgain();
        return true;
    }
    if (!isWhole || page.empty()) {
        return false;
    }
    const auto firstFolder =
        std::find_if(page.begin(), page.end(), [](const Entry& e) { return e.isFolder(); });
    if (firstFolder != page.end()) page.erase(firstFolder + 1, page.end());
    copyNext(page);
    return true;
}

/// The innermost folder has gone from its place: what was copied of it goes, too. Copies what has its name
/// now.
void TreeCopy::beginAgain() {
    const Level gone = std::move(levels_.back());
    levels_.pop_back();
    store_->write([&](Connection& connection) {
        Entries entries(connection);
        requireTop(entries);
        if (const std::optional<Entry> part = entries.find(levels_.back().to, gone.from.name)) {
            entries.erase(*part);
            Contents(connection).retire(*part);
        }
    });
    copyNext({gone.from});
}

void TreeCopy::copyNext(const std::vector<Entry>& page) {
    Level& level = levels_.back();
    level.last = page.back().name;
    std::vector<Entry> large;
    std::optional<Level> inner = store_->write([&](Connection& connection) {
        large.clear();
        return copyPage(connection, page, level.to, large);
    });
    for (const Entry& entry : large) copyLarge(entry, level.to);
    if (inner) {
        levels_.push_back(*std::move(inner));
    }
}

/// Copies all but the large files, which are left to be copied apart. The level of the folder at the end, if
/// there is one: of the one that has the name now. What has gone meanwhile is passed over.
std::optional<TreeCopy::Level> TreeCopy::copyPage(Connection& connection, const std::vector<Entry>& page,
                                                  std::int64_t to, std::vector<Entry>& large) {
    Entries entries(connection);
    requireTop(entries);
    std::optional<Level> inner;
    for (const Entry& listed : page) {
        std::optional<Entry> entry = entries.find(listed.parent, listed.name);
        if (!entry || entry->kind != listed.kind) continue;
        if (isLarge(*entry)) {
            large.push_back(*entry);
            continue;
        }
        const Entry source = *entry;
        entry->parent = to;
        entry->modified = timeOfNow();
        entry->id = connection.newNumber();
        entry->content = entry->size > 0 ? connection.newNumber() : kNoContent;
        entries.put(*entry);
        if (entry->isFolder()) {
            inner = Level{source, entry->id, {}};
        } else {
            copyBytes(connection, source.content, *entry);
        }
    }
    return inner;
}

void TreeCopy::copyLarge(const Entry& source, std::int64_t to) {
    std::optional<OpenFile> file = OpenFile::ofEntry(store_, source);
    if (!file) {
        return;
    }
    Draft draft(store_);
    draft.copyFrom(*file);
    draft.publish([&](Entries& entries) {
        requireTop(entries);
        return Place{to, source.name, std::nullopt, file->entry().isWritable};
    });
}

/// "Not found" unless the source is where it was: only then is known that nothing of it was swept meanwhile.
/// So a source that was moved has gone as well, though it is whole.
void TreeCopy::publish(const Path& from, const Entry& source, const Path& to, ReplacementPolicy policy) {
    store_->write([&](Connection& connection) {
        Entries entries(connection);
        if (entries.requireFolder(from).id != source.id) {
            fail(vfs::ErrorCode::NotFound);
        }
        Contents contents(connection);
        const Place place = placeFor(entries, to, Kind::Folder, policy);
        entries.erase(requireTop(entries));
        if (place.old) contents.retire(*place.old);
        entries.put(
            {place.folder, place.name, top_, Kind::Folder, source.isWritable, timeOfNow(), 0, kNoContent});
        contents.eraseOrphan(cradle_);
    });
    isPublished_ = true;
    pin_.release();
    sweep(*store_);
}

void copyFolder(const SharedStore& store, const Path& from, const Entry& source, const Path& to,
                ReplacementPolicy policy) {
    TreeCopy copy(store);
    copy.fill(source);
    copy.publish(from, source, to, policy);
}

}  // namespace

void copyEntry(const SharedStore& store, const Path& from, const Path& to, ReplacementPolicy policy) {
    store->requireWritable();
    const Entry source = store->read([&](Connection& connection) {
        Entries entries(connection);
        Entry entry = entries.require(from);
        placeFor(entries, to, entry.kind, policy);
        return entry;
    });
    if (source.isFolder()) {
        copyFolder(store, from, source, to, policy);
    } else {
        copyFile(store, from, to, policy);
    }
}

}  // namespace foundation::storage::sqlite
