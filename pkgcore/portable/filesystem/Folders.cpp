#include <pkgcore/platform/filesystem/Operations.hpp>

#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>

#include <limits.h>

#include <cstring>
#include <utility>

namespace fl::filesystem {

using posix::FileDescriptor;
using posix::NativePath;
using posix::Place;

namespace {

constexpr mode_t kFolderMode = 0777;  // less what the process's umask takes

// Somebody who removes without end what is made must not keep the call from ending.
constexpr int kMaxRaces = 8;

/// 0 or the error number.
int makeFolder(int directory, const char* path) {
    return posix::errorOf([&] { return posix::systemCalls().mkdirat(directory, path, kFolderMode); });
}

FileDescriptor enterFolder(int directory, const char* name) {
    return posix::openAt(directory, name, O_PATH | O_DIRECTORY);
}

/// Walks a path downwards and makes what is missing, holding one open folder, so that the path may have any
/// length.
class FolderMaker {
public:
    explicit FolderMaker(const std::u16string& path) : path_(path) {}

    /// Whether the last folder was made.
    bool run() {
        char* at = path_.bytes();
        if (*at == '/') {
            enterRoot();
        }
        for (at += std::strspn(at, "/"); *at != '\0'; at += std::strspn(at, "/")) {
            char* const end = at + std::strcspn(at, "/");
            const bool last = *end == '\0';
            *end = '\0';
            enter(at);
            at = last ? end : end + 1;
        }
        return made_;
    }

private:
    int directory() const { return folder_.isOpen() ? folder_.get() : AT_FDCWD; }

    /// Without the root, everything would be made in the working directory instead.
    void enterRoot() {
        folder_ = enterFolder(AT_FDCWD, "/");
        if (!folder_.isOpen()) {
            posix::throwError(errno, path_.text());
        }
    }

    void enter(const char* name) {
        made_ = false;
        FileDescriptor next = enterFolder(directory(), name);
        if (!next.isOpen() && errno == ENOENT) {
            next = make(name);
        }
        if (!next.isOpen()) {
            posix::throwError(errno, path_.text());
        }
        folder_ = std::move(next);
    }

    /// Makes and enters a folder. Somebody else may make it at the same moment, which is as good, or remove
    /// it.
    FileDescriptor make(const char* name) {
        for (int races = 0; races < kMaxRaces; ++races) {
            const int error = makeFolder(directory(), name);
            made_ = error == 0;
            if (error != 0 && error != EEXIST) {
                posix::throwError(error, path_.text());
            }
            FileDescriptor folder = enterFolder(directory(), name);
            if (folder.isOpen() || errno != ENOENT) {
                return folder;
            }
            if (isThere(name)) {
                errno = ENOTDIR;  // a link that leads nowhere is in the way
                return folder;
            }
        }
        errno = ENOENT;
        return {};
    }

    bool isThere(const char* name) const {
        struct stat status;
        return posix::readStatus({directory(), name}, status) == 0;
    }

    NativePath path_;
    FileDescriptor folder_;
    bool made_ = false;
};

}  // namespace

bool create_directory(const std::u16string& path) {
    const Place place(path);
    const int error = makeFolder(place.orThrow().directory(), place.path());
    if (error != 0) {
        posix::throwError(error, path);
    }
    return true;
}

bool create_directories(const std::u16string& path) {
    const NativePath whole(path);
    const int error = makeFolder(AT_FDCWD, whole.bytes());
    if (error == 0) {
        return true;
    }
    // Also where the error is not EEXIST: some file systems say first that they are read-only.
    if (error != ENOENT && posix::isFolder(AT_FDCWD, whole.bytes())) {
        return false;
    }
    if (error == ENOENT || error == EEXIST || whole.size() >= PATH_MAX) {
        return FolderMaker(path).run();
    }
    posix::throwError(error, path);
}

}  // namespace fl::filesystem
