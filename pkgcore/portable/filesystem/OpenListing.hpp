#pragma once

#include <pkgcore/portable/filesystem/FileDescriptor.hpp>
#include <pkgcore/portable/filesystem/FolderReader.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>

#include <sys/types.h>

#include <string>

namespace fl::filesystem::posix {

/// One of the few places for listings that stay open while others are under way below them: descriptors
/// belong to the whole process, so these places do too. Given back when the owner ends.
class ListingPlace {
public:
    ListingPlace() noexcept = default;
    ListingPlace(const ListingPlace&) = delete;
    ListingPlace& operator=(const ListingPlace&) = delete;
    ~ListingPlace();

    /// Whether a place is held, which is taken now if there is one.
    bool acquire() noexcept;

private:
    bool held_ = false;
};

/// A folder that is being listed, one of those that its thread has under way.
///
/// A listing of the entry on which the innermost other one stands is opened from there, not by its path, so
/// that the cost of a level does not grow with its depth. A listing around another one keeps its folder open
/// while there is a place for it; without one it is parked, and goes on when its turn comes again. Belongs to
/// the thread that made it.
class OpenListing {
public:
    /// Opens a folder given by its path, NotDirectoryError, PathNotFound or the like where that fails.
    /// `entryPath` is where the caller keeps the path of the entry on which the listing stands; it must
    /// outlive the listing.
    OpenListing(const std::u16string& folder, const std::u16string& entryPath);
    OpenListing(const OpenListing&) = delete;
    OpenListing& operator=(const OpenListing&) = delete;
    ~OpenListing();

    /// Moves to the next entry, false at the end and on an error. The path of the last entry must still be
    /// there.
    bool next();

    const FolderReader& reader() const noexcept { return reader_; }

    /// Once next() has given false: 0 at the end, or the error number.
    int error() const noexcept { return error_ != 0 ? error_ : reader_.error(); }

private:
    Item entry() const noexcept { return {folder_.get(), reader_.name()}; }
    bool standsOnFolder(const std::u16string& path) const noexcept;
    void makeWay();
    bool park();
    static bool closeOne();
    static FileDescriptor openOrThrow(const std::u16string& path, const OpenListing* outer);
    void reopenFrom(const FileDescriptor& below) noexcept;
    int reopen();
    int identityError(const FileDescriptor& folder) const noexcept;

    static thread_local OpenListing* innermost;

    const std::u16string& entryPath_;
    OpenListing* outer_;
    bool isBelowOuter_;
    FileDescriptor folder_;
    FolderReader reader_;
    int error_ = 0;
    dev_t device_ = 0;  // set, as the inode is, when the listing is parked
    ino_t inode_ = 0;
    ListingPlace place_;
};

}  // namespace fl::filesystem::posix
