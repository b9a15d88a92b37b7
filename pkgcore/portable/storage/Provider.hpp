#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/portable/storage/ProviderTypes.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/// @file
/// What a store has to offer so that it can be mounted in a storage system (StorageSystemBuilder.hpp).
///
/// Required of all of it:
/// - A failure leaves as foundation::storage::vfs::Exception with a code from 0 to 11, without a location:
///   the storage system adds that. "Could not tell" is a failure and never looks like "nothing there".
/// - A missing folder on the way is "not found". A file on the way is "not found" for what reads and "exists"
///   for what creates.
/// - Any thread may call any member of a Provider at any time. A Reader, Writer or Lister serves one thread
///   at a time, keeps what it needs of the store alive, and any number of them may exist at once.
///
/// docs/providers.md tells how to write one and how to check it.
namespace foundation::storage::provider {

/// An open file. Stays with the content that the file had when it was opened, whatever happens to the file.
class PKGCORE_PLATFORM_API Reader {
public:
    Reader() = default;
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    virtual ~Reader();

    /// Reads the next bytes, as many as are wanted unless the end comes first; 0 at the end.
    virtual std::size_t read(char* out, std::size_t count) = 0;

    /// Reads from an offset, as read() does; what read() gives next stays the same. 0 at and behind the end.
    /// With Traits::readsAt alone; otherwise throws "unsupported".
    virtual std::size_t readAt(std::uint64_t offset, char* out, std::size_t count);

    /// In bytes; none where only reading to the end tells.
    virtual std::optional<std::uint64_t> size() const = 0;
};

/// The content that a file is going to have. Nothing of it is seen before it is committed.
class PKGCORE_PLATFORM_API Writer {
public:
    Writer() = default;
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// Discards what is not committed.
    virtual ~Writer();

    /// Adds bytes at the end: all of them, or it throws, and then only discard() makes sense.
    virtual void write(const char* bytes, std::size_t count) = 0;

    /// Makes what was written so far the content of the file, in one step, and sets the file's time. After
    /// that, more may be written and committed again. Throws where nothing was published.
    virtual void commit() = 0;

    /// Gives up what was written since the last commit, all of it where there was none: the file is then as
    /// it was. The writer is not used any more.
    virtual void discard() noexcept = 0;
};

/// Goes once through the entries of a folder.
class PKGCORE_PLATFORM_API Lister {
public:
    Lister() = default;
    Lister(const Lister&) = delete;
    Lister& operator=(const Lister&) = delete;
    virtual ~Lister();

    /// The next entries, as many as the store likes to hold in memory; none at the end. Over all pages, each
    /// entry comes once, in the order of the UTF-16 units of the names. An entry that comes or goes meanwhile
    /// may or may not be shown.
    virtual std::vector<ListItem> next() = 0;

    /// next() into a page that was used before: puts the entries at its beginning, in the place of what
    /// stands there, and returns how many they are; 0 at the end. What is behind them means nothing: its
    /// memory is there to be used again. The storage system asks in this way alone. By default it takes what
    /// next() gives; a store that overrides it gains as much as its names cost to be allocated.
    virtual std::size_t fill(std::vector<ListItem>& page);
};

/// A store. The verbs that are not pure throw "unsupported" unless they are overridden, but for sync(), and
/// Traits say which are.
class PKGCORE_PLATFORM_API Provider {
public:
    Provider() = default;
    Provider(const Provider&) = delete;
    Provider& operator=(const Provider&) = delete;
    virtual ~Provider();

    /// The same at every call.
    virtual Traits traits() const = 0;

    /// What is at the path, or nothing. A path through a missing folder or through a file leads to nothing.
    virtual std::optional<Item> find(const Path& path) = 0;

    /// Lists a folder. "Not found" for a file and for nothing.
    virtual std::unique_ptr<Lister> list(const Path& folder) = 0;

    /// Opens a file. "Not found" for a folder and for nothing.
    virtual std::unique_ptr<Reader> openReader(const Path& file) = 0;

    /// Begins a new content of a file, which may be missing, but not the folder around it. "Exists" for a
    /// folder. The file stays writable or not, as it was; one that is not gets its new content all the same,
    /// since the storage system asks find() before it lets anybody write.
    virtual std::unique_ptr<Writer> openWriter(const Path& file, WriteMode mode);

    /// Makes one folder. "Exists" if anything is there.
    virtual void createFolder(const Path& folder);

    /// Removes a file, writable or not, an empty folder, or a link itself; "not empty" for another folder.
    /// The root is never asked for.
    virtual void remove(const Path& path);

    /// Removes a folder with everything in it, and follows no link. What can be removed is gone then, and the
    /// first failure is thrown at the end.
    virtual void removeTree(const Path& folder);

    /// Copies a file or, with Traits::copiesFolders, a folder with everything in it; neither of the two paths
    /// is ever at or below the other one. Content and writability are those of the source, the time is new.
    ///
    /// With policy 0 anything at `to` is "exists". With policy 1 a file takes the place of a file and a
    /// folder that of a folder, in one step and writable or not; one kind onto the other is "exists". A
    /// failure leaves what was at `to`, and nothing else.
    virtual void copy(const Path& from, const Path& to, ReplacementPolicy policy);

    /// Gives a file or folder another place; as copy(), but it keeps its time, and after a failure everything
    /// is where it was. Where all that could not be done is to remove what a folder has replaced, the new one
    /// is in place, the rest has a temporary name, and the failure tells it.
    virtual void move(const Path& from, const Path& to, ReplacementPolicy policy);

    /// Marks a file or a folder. A file that is not writable may still be read, moved, replaced and removed.
    virtual void setWritable(const Path& path, bool isWritable);

    /// Sets the time, kept to Traits::timeStep; a special time, and one that the store cannot keep, is
    /// "unsupported".
    virtual void setLastModified(const Path& path, const boost::posix_time::ptime& time);

    /// Returns when what is at the path outlives a loss of power, with all names on the way to it and all
    /// that is in a folder. The storage system asks for it when it has copied something here in order to move
    /// it, and removes the source in the other store then. Unless overridden it does nothing, which is right
    /// for a store whose changes all last as soon as they are made, and for one that ends with its process.
    virtual void sync(const Path& path);
};

}  // namespace foundation::storage::provider
