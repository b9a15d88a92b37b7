#include <pkgcore/portable/filesystem/FileOpening.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/platform/i18n/CvtException.hpp>
#include <pkgcore/portable/filesystem/NativePath.hpp>
#include <pkgcore/portable/filesystem/PathText.hpp>
#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <fcntl.h>
#include <limits.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <optional>

namespace fl::filesystem::posix {

namespace {

using OpenMode = std::ios_base::openmode;

constexpr OpenMode kIn = std::ios_base::in;
constexpr OpenMode kOut = std::ios_base::out;
constexpr OpenMode kTrunc = std::ios_base::trunc;
constexpr OpenMode kApp = std::ios_base::app;

constexpr mode_t kNewFileMode = 0666;
constexpr std::size_t kMaxBytesPerWideCharacter = 4;

struct ModeFlags {
    OpenMode mode;
    int flags;
};

// Combinations that are not here, such as trunc without out or with app, are refused.
constexpr ModeFlags kModeTable[] = {
    {kIn, O_RDONLY},
    {kOut, O_WRONLY | O_CREAT | O_TRUNC},
    {kOut | kTrunc, O_WRONLY | O_CREAT | O_TRUNC},
    {kApp, O_WRONLY | O_CREAT | O_APPEND},
    {kOut | kApp, O_WRONLY | O_CREAT | O_APPEND},
    {kIn | kOut, O_RDWR},
    {kIn | kOut | kTrunc, O_RDWR | O_CREAT | O_TRUNC},
    {kIn | kApp, O_RDWR | O_CREAT | O_APPEND},
    {kIn | kOut | kApp, O_RDWR | O_CREAT | O_APPEND},
};

std::optional<int> flagsOf(OpenMode mode) {
    const OpenMode known = mode & (kIn | kOut | kTrunc | kApp);
    const auto* const row =
        std::find_if(std::begin(kModeTable), std::end(kModeTable),
                     [known](const ModeFlags& candidate) { return candidate.mode == known; });
    return row == std::end(kModeTable) ? std::nullopt : std::optional<int>(row->flags);
}

/// Without O_NOCTTY a terminal that is opened could become the one that controls the process.
FileDescriptor openWith(int directory, const char* path, int flags) {
    return openAt(directory, path, flags | O_NOCTTY, kNewFileMode);
}

/// A path whose bytes are sure to fit the system's limit, without a detour over the heap.
FileDescriptor openShort(const std::wstring& path, int flags) {
    char bytes[PATH_MAX];
    std::size_t size = encodeText(path, bytes);
    if (size == kInvalidText) {
        return FileDescriptor();
    }
    while (size > 1 && bytes[size - 1] == '/') {
        --size;
    }
    bytes[size] = '\0';
    return openWith(AT_FDCWD, bytes, flags);
}

FileDescriptor openLong(const std::wstring& path, int flags) {
    try {
        const std::u16string text = i18n::to_ustring(path);
        const Place place(text);
        return place.error() == 0 ? openWith(place.directory(), place.path(), flags) : FileDescriptor();
    } catch (const FsysExceptionBase&) {
        return FileDescriptor();  // no form in bytes: a file that cannot be opened, as for a short path
    } catch (const i18n::CvtExceptionBase&) {
        return FileDescriptor();
    }
}

/// Asks for no entry at all: what has none refuses at once, whatever it is, and nothing is waited for or
/// taken. That is less work for the system than a status.
bool isFolder(int descriptor) {
    return systemCalls().getdents64(descriptor, nullptr, 0) >= 0 || errno != ENOTDIR;
}

}  // namespace

FileDescriptor openFile(const std::wstring& path, OpenMode mode) {
    const std::optional<int> flags = flagsOf(mode);
    if (!flags) {
        return FileDescriptor();
    }
    const bool isShort = path.size() < PATH_MAX / kMaxBytesPerWideCharacter;
    FileDescriptor file = isShort ? openShort(path, *flags) : openLong(path, *flags);
    // For writing, the system itself refuses a folder.
    if (file.isOpen() && *flags == O_RDONLY && isFolder(file.get())) {
        file.reset();
    }
    return file;
}

}  // namespace fl::filesystem::posix
