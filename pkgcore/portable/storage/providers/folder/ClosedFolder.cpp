#include <pkgcore/portable/storage/providers/folder/ClosedFolder.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/NativePath.hpp>

#include <algorithm>
#include <string_view>

namespace foundation::storage::portable {

namespace posix = fl::filesystem::posix;

using posix::FileDescriptor;

namespace {

/// Refused here once more, whoever calls: these are the names with which a path could leave the folder.
void refuseDots(std::string_view path) {
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view name = path.substr(0, end);
        if (name.empty() || name == "." || name == "..") {
            throw fl::filesystem::InvalidArgument(std::u16string());
        }
        path.remove_prefix(std::min(end + 1, path.size()));
    }
}

/// Whether one call of the system could not do it for a reason that is not the path's.
bool isOutOfReach(int error) noexcept {
    return error == ENOSYS || error == EPERM || error == EAGAIN || error == EINVAL || error == E2BIG ||
           error == ENAMETOOLONG;
}

FileDescriptor openInOneCall(int root, const char* path, int flags) noexcept {
    open_how how{};
    how.flags = static_cast<unsigned>(flags | O_DIRECTORY | O_CLOEXEC);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    return FileDescriptor(
        posix::retryInterrupted([&] { return posix::systemCalls().openat2(root, path, &how); }));
}

/// The same by one folder at a time, for systems without that call and for paths that are too long for it.
FileDescriptor openByTurns(int root, std::string path, int flags) noexcept {
    FileDescriptor folder;
    char* name = path.data();
    while (name != nullptr) {
        char* const separator = std::find(name, path.data() + path.size(), '/');
        const bool isLast = *separator == '\0';
        *separator = '\0';
        const int around = folder.isOpen() ? folder.get() : root;
        folder = posix::openAt(around, name, (isLast ? flags : O_PATH) | O_DIRECTORY | O_NOFOLLOW);
        if (!folder.isOpen()) {
            return folder;
        }
        name = isLast ? nullptr : separator + 1;
    }
    return folder;
}

FileDescriptor openBeneath(int root, const std::string& path, int flags) {
    FileDescriptor folder = openInOneCall(root, path.c_str(), flags);
    if (!folder.isOpen() && isOutOfReach(errno)) {
        folder = openByTurns(root, path, flags);
    }
    if (!folder.isOpen()) {
        // A link, for which the two ways have different numbers.
        posix::throwError(errno == ELOOP || errno == EXDEV ? ENOTDIR : errno, std::u16string());
    }
    return folder;
}

std::string bytesOf(const std::u16string& path) {
    const posix::NativePath native(path);
    return std::string(native.bytes(), native.size());
}

}  // namespace

ClosedFolder::ClosedFolder(const std::u16string& path) {
    const posix::Place place(path);
    root_ = posix::openAt(place.orThrow().directory(), place.path(), O_PATH | O_DIRECTORY);
    if (!root_.isOpen()) {
        posix::throwError(errno, path);
    }
}

FileDescriptor ClosedFolder::open(const provider::Path& folder, int flags) const {
    if (folder.isRoot()) {
        return openBeneath(root_.get(), ".", flags);
    }
    const std::string path = bytesOf(folder.text());
    refuseDots(path);
    return openBeneath(root_.get(), path, flags);
}

HeldItem ClosedFolder::hold(const provider::Path& path) const {
    if (path.isRoot()) {
        return HeldItem{open(path, O_PATH), "."};
    }
    refuseDots(bytesOf(path.text()));
    return HeldItem{open(path.parent(), O_PATH), bytesOf(std::u16string(path.name()))};
}

}  // namespace foundation::storage::portable
