#include <pkgcore/platform/storage/Folder.hpp>

#include <pkgcore/platform/storage/Listing.hpp>
#include <pkgcore/portable/storage/layer/FolderCreation.hpp>
#include <pkgcore/portable/storage/layer/ListingSource.hpp>
#include <pkgcore/portable/storage/layer/Marks.hpp>
#include <pkgcore/portable/storage/layer/Removal.hpp>
#include <pkgcore/portable/storage/layer/StorageSystem.hpp>
#include <pkgcore/portable/storage/layer/Transfer.hpp>

namespace foundation::storage::vfs {

namespace {

constexpr provider::Kind kKind = provider::Kind::Folder;

portable::Spot spotOf(const Folder& folder) {
    return portable::findSpot(folder.getLocation(), folder.getStorageSystem());
}

Listing list(const Folder& folder, const std::u16string& pattern, portable::Depth depth) {
    return Listing(
        std::make_unique<portable::ListingSource>(spotOf(folder), folder.getStorageSystem(), pattern, depth));
}

}  // namespace

Listing Folder::listAll(const std::u16string& pattern) const {
    return list(*this, pattern, portable::Depth::Folder);
}

Listing Folder::listAllRecursive(const std::u16string& pattern) const {
    return list(*this, pattern, portable::Depth::Tree);
}

void Folder::createFolder() const { spotOf(*this).createFolder(); }

void Folder::createFolderRecursive() const { portable::createFolders(spotOf(*this)); }

void Folder::setWritable(bool writable) const { portable::setWritable(spotOf(*this), kKind, writable); }

void Folder::setLastModified(boost::posix_time::ptime time) const {
    portable::setLastModified(spotOf(*this), kKind, time);
}

void Folder::removeFolder(FolderRemovalPolicy policy) const { portable::removeFolder(spotOf(*this), policy); }

void Folder::copyFolder(const Folder& destination, provider::ReplacementPolicy policy) const {
    portable::copyEntry(spotOf(*this), spotOf(destination), kKind, policy);
}

void Folder::moveFolder(const Folder& destination, provider::ReplacementPolicy policy) const {
    portable::moveEntry(spotOf(*this), spotOf(destination), kKind, policy);
}

}  // namespace foundation::storage::vfs
