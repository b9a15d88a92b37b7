#pragma once

#include <pkgcore/portable/filesystem/NativePath.hpp>
#include <pkgcore/portable/storage/ProviderTypes.hpp>

#include <sys/stat.h>

#include <optional>
#include <string>

/// What is at a native path. Failures are those of the file system.
namespace foundation::storage::portable {

/// The status of an item itself, and of what it leads to if it is a link.
struct LocalStatus {
    struct stat status;
    bool isLink;
    bool isDangling;  ///< a link that leads nowhere; the status is its own
};

/// None where nothing is, or the path leads through something that is no folder.
std::optional<LocalStatus> localStatus(const fl::filesystem::posix::Place& place);

provider::Item itemOf(const LocalStatus& found);

/// The path of what a link leads to, also where nothing is there; other paths as they are.
std::u16string resolvedLink(const std::u16string& path);

}  // namespace foundation::storage::portable
