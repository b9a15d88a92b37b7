#include <pkgcore/platform/filesystem/Temporary.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/path/PathSyntax.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/NativePath.hpp>
#include <pkgcore/portable/filesystem/PathText.hpp>
#include <pkgcore/portable/filesystem/RandomName.hpp>
#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <fcntl.h>
#include <limits.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

namespace fl::filesystem {

using posix::FileDescriptor;
using posix::Place;
using posix::systemCalls;

namespace {

// A second name that is taken is next to impossible; so many in a row mean that the random source or the disk
// is broken.
constexpr int kMostDraws = 1000;

std::u16string decoded(const char* bytes) {
    std::u16string text;
    posix::appendDecoded(bytes, text);
    return text;
}

/// Creates the file; none, for the next draw, where something has that name.
FileDescriptor createFile(const Place& place) {
    FileDescriptor file = posix::openAt(place.orThrow().directory(), place.path(), O_RDWR | O_CREAT | O_EXCL,
                                        S_IRUSR | S_IWUSR);
    if (!file.isOpen() && errno != EEXIST) {
        posix::throwError(errno, place.text());
    }
    return file;
}

/// A mask can take away what the owner needs. A file system without permissions refuses, which does no harm.
void giveToOwner(const FileDescriptor& file) {
    posix::retryInterrupted([&] { return systemCalls().fchmod(file.get(), S_IRUSR | S_IWUSR); });
}

/// The stream that owns the file from now on; removes the file where no stream can be had.
std::FILE* toStream(FileDescriptor file, const Place& place) {
    std::FILE* const stream = systemCalls().fdopen(file.get(), "w+b");
    if (stream == nullptr) {
        posix::retryInterrupted([&] { return systemCalls().unlinkat(place.directory(), place.path(), 0); });
        return nullptr;
    }
    file.release();
    return stream;
}

/// A relative path would name another folder as soon as the working directory changes, while temporary items
/// are removed long after they were made.
bool isUsable(const char* folder) {
    return folder != nullptr && folder[0] == '/' && posix::isFolder(AT_FDCWD, folder);
}

}  // namespace

// As with every reader of the environment, another thread must not change it meanwhile.
std::u16string temp_directory_name() {
    for (const char* const variable : {"TMPDIR", "TMP", "TEMP", "TEMPDIR"}) {
        const char* const folder = std::getenv(variable);
        if (isUsable(folder)) {
            return decoded(folder);
        }
    }
    return posix::isFolder(AT_FDCWD, "/tmp") ? u"/tmp" : std::u16string();
}

std::u16string get_current_path() {
    std::string path(PATH_MAX, '\0');
    while (systemCalls().getcwd(path.data(), path.size()) == nullptr) {
        if (errno != ERANGE) {
            posix::throwError(errno, std::u16string());
        }
        path.resize(path.size() * 2);
    }
    // Linux begins the name of a folder that is not below this process's root with "(unreachable)".
    if (path.front() != '/') {
        posix::throwError(ENOENT, std::u16string());
    }
    return decoded(path.c_str());
}

std::u16string tmpnam(const std::u16string& directory, const std::u16string& prefix,
                      const std::u16string& extension) {
    std::u16string name = prefix;
    posix::appendRandomName(name);
    return detail::concatenate_pathname(directory, name + extension, true);
}

std::FILE* tmpfile(std::u16string& name, const std::u16string& directory, const std::u16string& prefix,
                   const std::u16string& extension) {
    for (int draw = 0; draw < kMostDraws; ++draw) {
        std::u16string drawn = tmpnam(directory, prefix, extension);
        const Place place(drawn);
        FileDescriptor file = createFile(place);
        if (file.isOpen()) {
            giveToOwner(file);
            std::FILE* const stream = toStream(std::move(file), place);
            if (stream != nullptr) name = std::move(drawn);
            return stream;
        }
    }
    throw FileExistsError(directory);
}

}  // namespace fl::filesystem
