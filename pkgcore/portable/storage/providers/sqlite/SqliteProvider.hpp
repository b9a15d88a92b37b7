#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

#include <chrono>
#include <memory>
#include <string>

/// Marks what libpkgcore-sqlite exports.
#if defined(PKGCORE_SQLITE_BUILDING)
#define PKGCORE_SQLITE_API PKGCORE_SYMBOL_EXPORT
#else
#define PKGCORE_SQLITE_API PKGCORE_SYMBOL_IMPORT
#endif

namespace foundation::storage::provider {

/// What a change that was made survives. The end of the process, however it comes, loses nothing either way.
enum class SqliteDurability : unsigned char {
    Full,   ///< the loss of power: a call returns when the change is on the disk
    Normal  ///< not always the loss of power, which may take the last changes; the store stays whole
};

/// How a store is opened.
struct SqliteOptions {
    /// Nothing is changed; every verb that would throws "the storage is read-only" (code 5).
    bool isReadOnly = false;
    /// A store is made where nothing is. Not together with isReadOnly.
    bool mayCreate = true;
    /// What a change survives that a call has made.
    SqliteDurability durability = SqliteDurability::Full;
    /// How long each transaction waits for other threads and processes, all its waiting taken together,
    /// before the call throws "busy" (code 7). Most calls are one transaction; those for large files and for
    /// trees are several. More than a year is for ever.
    std::chrono::milliseconds busyTime{5000};
};

/// A store in one file, an SQLite database of a layout of its own (docs/providers/sqlite.md). Several
/// processes may have it open at once. All that is in it takes 16 TiB at most, in folders of any size; a
/// folder is moved, and removed from sight, as fast as a file. Every page of the file, every content and
/// every name is under a checksum (XXH3): what is read or listed is what was written, and what is not found
/// was not there, or the call throws "damaged" (code 10). So are the pages of the journal that a killed
/// process leaves beside the file. While SQLite has a change in a write-ahead log there, damage in that can
/// hide an entry or undo the last changes.
///
/// `path` is a native path. A relative one is resolved now, and a later change of the working directory does
/// not matter. What a process that has ended left half written is cleaned up now. While the store is open,
/// nobody may delete, rename or replace its file, and this process may not open and close that file by other
/// means than SQLite's: the system drops the locks of the process then. In a child of fork(), each
/// call that needs the file is refused (code 11), and letting go of the store does no harm.
///
/// Throws foundation::storage::vfs::Exception, and then nothing at the path has changed, except that a change
/// in which a process had ended may have been undone:
/// - NotFound where nothing is and nothing is to be made, or a folder on the way is missing;
/// - NotSupported for what is no store: a folder, a text, an empty file, the database of another program, and
///   for a store of a newer version, and for a path or a name that is too long. The message says which;
/// - NotRecoverable for a store that is cut off or damaged, or has a damaged journal beside it, and for the
///   journal of one that has gone;
/// - IOError for one that is to be read only, and has a change to be undone first;
/// - AccessDenied or ReadOnlyStorage where it is to be written and may not be; TemporarilyBusy.
///
/// A store is made whole or not at all, also when several processes make it at once. One that was being made
/// when the process ended leaves a file with a name of the form `<name>.<random>.new` beside the path.
/// Where the name of a new store cannot be brought to the disk, that is an IOError, and the store stays.
PKGCORE_SQLITE_API std::shared_ptr<Provider> openSqliteProvider(const std::u16string& path,
                                                                const SqliteOptions& options = {});

/// Makes the file of a store as small as what is in it: removed content leaves free pages in it, which are
/// used again and do not go by themselves. What processes that have ended left half written goes, too.
///
/// Others may have the store open, this process included, and wait while it works: all of them or, where the
/// store has a write-ahead log, who changes something. A call that waits for longer than its busyTime throws
/// "busy" (code 7). The file gets smaller at once; with a log, when nobody has the store open any more.
///
/// It needs room for a second copy of what is in the store, in the folder for temporary files (SQLITE_TMPDIR,
/// TMPDIR, /var/tmp or /tmp, the first one that can be written), and beside the store for a journal as large
/// as the file was.
///
/// Throws foundation::storage::vfs::Exception, and then the store is as it was:
/// - TemporarilyBusy if others are at work for longer than `busyTime`;
/// - NoSpace where that room is missing;
/// - NotRecoverable where damage is found: every page is read;
/// - what openSqliteProvider() throws; NotFound if there is no store, since none is made.
/// If the process ends meanwhile, who opens the store for writing next undoes what was done.
PKGCORE_SQLITE_API void compactSqliteStore(
    const std::u16string& path, std::chrono::milliseconds busyTime = std::chrono::milliseconds(5000));

}  // namespace foundation::storage::provider
