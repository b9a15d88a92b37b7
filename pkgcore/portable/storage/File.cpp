#include <pkgcore/platform/storage/File.hpp>

#include <pkgcore/portable/storage/layer/Marks.hpp>
#include <pkgcore/portable/storage/layer/Removal.hpp>
#include <pkgcore/portable/storage/layer/StorageSystem.hpp>
#include <pkgcore/portable/storage/layer/Transfer.hpp>

namespace foundation::storage::vfs {

namespace {

constexpr provider::Kind kKind = provider::Kind::File;

portable::Spot spotOf(const File& file) {
    return portable::findSpot(file.getLocation(), file.getStorageSystem());
}

}  // namespace

void File::setWritable(bool writable) const { portable::setWritable(spotOf(*this), kKind, writable); }

void File::setLastModified(boost::posix_time::ptime time) const {
    portable::setLastModified(spotOf(*this), kKind, time);
}

void File::removeFile() const { portable::removeFile(spotOf(*this)); }

void File::copyFile(const File& destination, provider::ReplacementPolicy policy) const {
    portable::copyEntry(spotOf(*this), spotOf(destination), kKind, policy);
}

void File::moveFile(const File& destination, provider::ReplacementPolicy policy) const {
    portable::moveEntry(spotOf(*this), spotOf(destination), kKind, policy);
}

}  // namespace foundation::storage::vfs
