#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

#include <utility>

namespace foundation::storage::vfs {

/// A place that is taken for a file, whether or not one is there: making one asks storage for nothing. Keeps
/// its storage system alive.
///
/// Required of every operation: a failure is an Exception with the place concerned, or
/// UnsupportedIRISchemeException where the scheme is not mounted. A missing file, a file above it in the path
/// and a folder in its place are NotFound. What a store cannot do is NotSupported, and nothing has changed
/// then.
class PKGCORE_PLATFORM_API File {
public:
    /// The place `location` in `storage`; nothing is checked.
    File(CanonicalAbsoluteIRI location, StorageSystemReference storage)
        : location_(std::move(location)), storage_(std::move(storage)) {}

    /// What it was made of.
    /// @{
    const CanonicalAbsoluteIRI& getLocation() const& noexcept { return location_; }
    CanonicalAbsoluteIRI getLocation() && noexcept { return std::move(location_); }
    const StorageSystemReference& getStorageSystem() const noexcept { return storage_; }
    /// @}

    /// Makes it another file of the same storage system.
    void setLocation(CanonicalAbsoluteIRI location) noexcept { location_ = std::move(location); }

    /// A file that is not writable refuses to be written; it may be removed, moved and replaced.
    void setWritable(bool writable) const;

    /// Sets the time of the last change of the content (UTC, to the microsecond). not_a_date_time changes
    /// nothing; a time that the store cannot keep is NotSupported and leaves the old one.
    void setLastModified(boost::posix_time::ptime time) const;

    /// Removes the file, a read-only one too. In the scheme "file" a link is removed itself.
    void removeFile() const;

    /// Copies the content to `destination`, also into another store. Readers of the destination see the old
    /// content or the new one whole, never a mixture; a failure leaves the old one, or nothing, there. A
    /// missing folder around it is NotFound; a file onto itself, and a pipe, socket or device, NotSupported.
    void copyFile(const File& destination, provider::ReplacementPolicy policy) const;

    /// Moves the file to `destination`, also into another store, with its time and whether it is writable.
    /// Replacing is one step. A failure leaves the file whole at its old place; only where that could not be
    /// cleared after a copy into another store it stands at both. A missing folder around the destination is
    /// NotFound; a file onto its own place changes nothing.
    void moveFile(const File& destination, provider::ReplacementPolicy policy) const;

private:
    CanonicalAbsoluteIRI location_;
    StorageSystemReference storage_;
};

}  // namespace foundation::storage::vfs
