#pragma once

#include <pkgcore/portable/storage/ProviderTypes.hpp>
#include <pkgcore/portable/storage/providers/native/HeldItem.hpp>

namespace foundation::storage::portable {

/// A folder of the host below which paths are looked up without leaving it. Failures are those of the file
/// system; a link on the way is as a file there.
class ClosedFolder {
public:
    /// Holds the folder open.
    explicit ClosedFolder(const std::u16string& path);

    /// Opens a folder below, or the folder itself, with flags of open beside O_DIRECTORY.
    fl::filesystem::posix::FileDescriptor open(const provider::Path& folder, int flags) const;

    /// An item below; the root is the name ".".
    HeldItem hold(const provider::Path& path) const;

private:
    fl::filesystem::posix::FileDescriptor root_;
};

}  // namespace foundation::storage::portable
