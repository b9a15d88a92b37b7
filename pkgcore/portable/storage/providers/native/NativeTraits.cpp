#include <pkgcore/portable/storage/providers/native/NativeTraits.hpp>

#include <pkgcore/portable/filesystem/FileTimes.hpp>

namespace foundation::storage::portable {

namespace {

constexpr mode_t kAllBits = 07777;
constexpr mode_t kWriteBits = 0222;
constexpr mode_t kOwnerWriteBit = 0200;

/// In bytes, of which a unit takes at least one.
constexpr std::size_t kLongestName = 255;

}  // namespace

provider::Traits nativeTraits() noexcept {
    provider::Traits traits;
    traits.readsAt = true;
    traits.writes = true;
    traits.appends = true;
    traits.createsFolders = true;
    traits.removes = true;
    traits.removesTrees = true;
    traits.copiesFiles = true;
    traits.copiesFolders = true;
    traits.movesFiles = true;
    traits.movesFolders = true;
    traits.setsWritable = true;
    traits.setsLastModified = true;
    traits.hasByteNames = true;
    traits.growsInPlace = true;
    traits.maxNameLength = kLongestName;
    return traits;
}

provider::Item nativeItem(const struct stat& status) noexcept {
    provider::Item item;
    item.kind = S_ISDIR(status.st_mode) ? provider::Kind::Folder : provider::Kind::File;
    item.isWritable = (status.st_mode & kWriteBits) != 0;
    item.isLink = S_ISLNK(status.st_mode);
    item.isDevice = !S_ISDIR(status.st_mode) && !S_ISREG(status.st_mode) && !item.isLink;
    item.lastModified = fl::filesystem::posix::toPtime(status.st_mtim);
    item.identity = provider::Identity{status.st_dev, 0, status.st_ino};
    return item;
}

mode_t markedMode(mode_t mode, bool isWritable) noexcept {
    const mode_t bits = mode & kAllBits;
    return isWritable ? bits | kOwnerWriteBit : bits & ~kWriteBits;
}

}  // namespace foundation::storage::portable
