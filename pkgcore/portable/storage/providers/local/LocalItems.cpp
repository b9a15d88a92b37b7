#include <pkgcore/portable/storage/providers/local/LocalItems.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>
#include <pkgcore/portable/storage/providers/native/NativeTraits.hpp>

namespace foundation::storage::portable {

namespace posix = fl::filesystem::posix;

namespace {

/// As the system has it.
constexpr int kMaxLinks = 40;

int readStatusOfTarget(posix::Item item, struct stat& status) {
    return posix::errorOf([&] { return posix::systemCalls().fstatat(item.folder, item.name, &status, 0); });
}

bool leadsNowhere(int error) noexcept { return error == ENOENT || error == ENOTDIR || error == ELOOP; }

}  // namespace

std::optional<LocalStatus> localStatus(const posix::Place& place) {
    LocalStatus found{};
    int error = place.error() != 0 ? place.error() : posix::readStatus(posix::itemAt(place), found.status);
    if (error == ENOENT || error == ENOTDIR) {
        return std::nullopt;
    }
    if (error == 0 && S_ISLNK(found.status.st_mode)) {
        found.isLink = true;
        struct stat target;
        error = readStatusOfTarget(posix::itemAt(place), target);
        found.isDangling = leadsNowhere(error);
        if (error == 0) {
            found.status = target;
        }
    }
    if (error != 0 && !found.isDangling) {
        posix::throwError(error, place.text());
    }
    return found;
}

provider::Item itemOf(const LocalStatus& found) {
    provider::Item item = nativeItem(found.status);
    item.isLink = found.isLink;
    return item;
}

std::u16string resolvedLink(const std::u16string& path) {
    std::u16string resolved = path;
    for (int i = 0; i < kMaxLinks; ++i) {
        if (!fl::filesystem::file_status::is_symlink(fl::filesystem::symlink_status(resolved))) {
            return resolved;
        }
        const std::u16string target = fl::filesystem::read_symlink(resolved);
        const bool isAbsolute = !target.empty() && target[0] == u'/';
        resolved.resize(isAbsolute ? 0 : resolved.rfind(u'/') + 1);
        resolved += target;
    }
    throw fl::filesystem::InvalidArgument(path);
}

}  // namespace foundation::storage::portable
