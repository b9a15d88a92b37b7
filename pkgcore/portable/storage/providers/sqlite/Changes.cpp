#include <pkgcore/portable/storage/providers/sqlite/Changes.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Contents.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Names.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Sweep.hpp>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace foundation::storage::sqlite {

using boost::posix_time::ptime;
using provider::Kind;
using provider::Path;
using provider::ReplacementPolicy;
using vfs::ErrorCode;

namespace {

ptime epoch() { return ptime(boost::gregorian::date(1970, 1, 1)); }

std::string newName(const Path& path) {
    if (path.name().size() > kMaxNameLength) {
        fail(ErrorCode::NotSupported, "The name is too long for the storage");
    }
    return encodeName(path.name());
}

/// Calls change(entries, contents), which says whether it leaves an orphan.
template <typename Change>
void changeStore(Store& store, Change change) {
    const bool leavesOrphan = store.write([&](Connection& connection) {
        Entries entries(connection);
        Contents contents(connection);
        return change(entries, contents);
    });
    if (leavesOrphan) {
        sweep(store);
    }
}

template <typename Change>
void changeEntry(Store& store, const Path& path, Change change) {
    changeStore(store, [&](Entries& entries, Contents& /*contents*/) {
        Entry entry = entries.require(path);
        change(entry);
        entries.put(entry);
        return false;
    });
}

}  // namespace

Place placeFor(Entries& entries, const Path& to, Kind kind, ReplacementPolicy policy) {
    Place place;
    place.folder = entries.folderForCreation(to).id;
    place.name = newName(to);
    place.old = entries.find(place.folder, place.name);
    if (place.old && (policy == ReplacementPolicy::FailIfExists || place.old->kind != kind)) {
        fail(ErrorCode::AlreadyExists);
    }
    if (place.old && place.old->isFolder()) {
        entries.requireRemovable(*place.old);
    }
    return place;
}

Place placeForWriting(Entries& entries, const Path& file, bool mayReplace) {
    Place place;
    place.old = entries.find(file);
    if (place.old && (place.old->isFolder() || !mayReplace)) {
        fail(ErrorCode::AlreadyExists);
    }
    place.folder = place.old ? place.old->parent : entries.folderForCreation(file).id;
    place.name = newName(file);
    place.isWritable = !place.old || place.old->isWritable;
    return place;
}

provider::Item itemOf(const Entry& entry) {
    provider::Item item;
    item.kind = entry.kind;
    item.isWritable = entry.isWritable;
    item.lastModified = epoch() + boost::posix_time::microseconds(entry.modified);
    return item;
}

void createFolder(Store& store, const Path& folder) {
    store.write([&](Connection& connection) {
        Entries entries(connection);
        Entry entry;
        const Place place = placeFor(entries, folder, Kind::Folder, ReplacementPolicy::FailIfExists);
        entry.parent = place.folder;
        entry.name = place.name;
        entry.kind = Kind::Folder;
        entry.modified = timeOfNow();
        entry.id = connection.newNumber();
        entries.put(entry);
    });
}

void removeEntry(Store& store, const Path& path) {
    changeStore(store, [&](Entries& entries, Contents& contents) {
        const Entry entry = entries.require(path);
        if (entry.isFolder() && !entries.isEmpty(entry)) {
            fail(ErrorCode::FolderNotEmpty);
        }
        entries.requireGivesUp(path);
        entries.erase(entry);
        return !entry.isFolder() && contents.retire(entry);
    });
}

void removeTree(Store& store, const Path& folder) {
    changeStore(store, [&](Entries& entries, Contents& contents) {
        const Entry entry = entries.requireFolder(folder);
        entries.requireRemovable(entry);
        entries.requireGivesUp(folder);
        entries.erase(entry);
        return contents.retire(entry);
    });
}

void moveEntry(Store& store, const Path& from, const Path& to, ReplacementPolicy policy) {
    changeStore(store, [&](Entries& entries, Contents& contents) {
        Entry entry = entries.require(from);
        entries.requireGivesUp(from);
        const Place place = placeFor(entries, to, entry.kind, policy);
        const bool leavesOrphan = place.old && contents.retire(*place.old);
        entries.erase(entry);
        entry.parent = place.folder;
        entry.name = place.name;
        entries.put(entry);
        return leavesOrphan;
    });
}

void setWritable(Store& store, const Path& path, bool isWritable) {
    changeEntry(store, path, [isWritable](Entry& entry) { entry.isWritable = isWritable; });
}

void setLastModified(Store& store, const Path& path, const ptime& time) {
    store.requireWritable();
    if (time.is_special()) {
        fail(ErrorCode::NotSupported);
    }
    const std::int64_t modified = (time - epoch()).total_microseconds();
    changeEntry(store, path, [modified](Entry& entry) { entry.modified = modified; });
}

}  // namespace foundation::storage::sqlite
