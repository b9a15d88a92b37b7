#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

#include <string>
#include <utility>

namespace foundation::storage::vfs {

class Listing;

/// A place that is taken for a folder, whether or not one is there: making one asks storage for nothing.
/// Keeps its storage system alive.
///
/// Required of every operation: a failure is an Exception with the place concerned, or
/// UnsupportedIRISchemeException where the scheme is not mounted. A missing folder, a file above it in the
/// path and a file in its place are NotFound. What a store cannot do is NotSupported, and nothing has changed
/// then.
class PKGCORE_PLATFORM_API Folder {
public:
    /// The place `location` in `storage`; nothing is checked.
    Folder(CanonicalAbsoluteIRI location, StorageSystemReference storage)
        : location_(std::move(location)), storage_(std::move(storage)) {}

    /// What it was made of.
    /// @{
    const CanonicalAbsoluteIRI& getLocation() const noexcept { return location_; }
    const StorageSystemReference& getStorageSystem() const noexcept { return storage_; }
    /// @}

    /// The entries of the folder whose names match `pattern` ("*" any characters, "?" one); all with an empty
    /// one. Each once, in the order of the code units of their names. Pipes, sockets and devices of the
    /// scheme "file" are left out.
    Listing listAll(const std::u16string& pattern) const;

    /// The same for everything below the folder, a folder before what it holds, which stands in its place;
    /// folders that do not match are descended into all the same. Links of the scheme "file" are not.
    Listing listAllRecursive(const std::u16string& pattern) const;

    /// Makes the folder. Anything there is AlreadyExists; a missing folder around it is NotFound, a file in
    /// the middle of the path AlreadyExists.
    void createFolder() const;

    /// Makes the folder and all that are missing above it; folders that exist are fine, a file in the way is
    /// AlreadyExists. Those made before a failure stay.
    void createFolderRecursive() const;

    /// A folder that is not writable takes no new entries and gives none up; stores may have no such folders.
    void setWritable(bool writable) const;

    /// As File::setLastModified.
    void setLastModified(boost::posix_time::ptime time) const;

    /// The root of a store is NotSupported. Links of the scheme "file" are removed and never followed. With
    /// the contents: what can be removed is removed, and the first failure is reported at the end.
    void removeFolder(FolderRemovalPolicy policy) const;

    /// Copies the folder with all that it holds, also into another store. A missing folder around the
    /// destination is NotFound; a folder onto or into itself is NotSupported before anything is changed; a
    /// pipe, socket or device in it is NotSupported, too, and the copy fails. A
    /// failure leaves the old destination or what was copied by then, and the source as it was.
    void copyFolder(const Folder& destination, provider::ReplacementPolicy policy) const;

    /// Moves the folder with all that it holds, also into another store. A missing folder around the
    /// destination is NotFound, a folder into itself NotSupported before anything is changed; onto its own
    /// place it changes nothing. Nothing is lost: a failure leaves the source whole, or a whole destination
    /// and a rest of what could not be removed: of the old destination, or of the source after a copy into
    /// another store or file system. That rest has the name of the form ".<20 characters>.tmp" that the
    /// failure tells; only in a store that does not move folders it keeps the name of the source. Remove it
    /// then: moved again with replacement, it would take the place of the whole.
    void moveFolder(const Folder& destination, provider::ReplacementPolicy policy) const;

private:
    CanonicalAbsoluteIRI location_;
    StorageSystemReference storage_;
};

}  // namespace foundation::storage::vfs
