#include <pkgcore/platform/storage/FileOrFolder.hpp>

#include <pkgcore/portable/storage/layer/StorageSystem.hpp>

#include <boost/variant/apply_visitor.hpp>

namespace foundation::storage::vfs {

namespace {

constexpr provider::Kind kindOf(const File& /*file*/) noexcept { return provider::Kind::File; }
constexpr provider::Kind kindOf(const Folder& /*folder*/) noexcept { return provider::Kind::Folder; }

provider::Item itemOf(const FileOrFolder& entry) {
    return boost::apply_visitor(
        [](const auto& place) {
            return portable::findSpot(place.getLocation(), place.getStorageSystem()).require(kindOf(place));
        },
        entry);
}

}  // namespace

bool isWritable(const FileOrFolder& entry) { return itemOf(entry).isWritable; }

boost::posix_time::ptime getLastModified(const FileOrFolder& entry) { return itemOf(entry).lastModified; }

}  // namespace foundation::storage::vfs
