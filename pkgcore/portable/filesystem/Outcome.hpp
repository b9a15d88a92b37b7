#pragma once

#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <fcntl.h>
#include <sys/stat.h>

#include <string>

namespace fl::filesystem::posix {

/// A name in an open folder (or AT_FDCWD and a path), as the `*at` calls take it.
struct Item {
    int folder;
    const char* name;
};

/// Which of two items an error concerns.
enum class Side : unsigned char { kSource, kDestination };

/// How a step from one item to another ended: 0, or an error number of the system and the item concerned. A
/// value, since a tree copies thousands of files and each path is only built for the one that fails.
struct [[nodiscard]] Outcome {
    int error = 0;
    Side side = Side::kSource;

    bool failed() const noexcept { return error != 0; }
};

inline Outcome atSource(int error) noexcept { return {error, Side::kSource}; }
inline Outcome atDestination(int error) noexcept { return {error, Side::kDestination}; }

/// Throws what a failed outcome stands for, with the path of the item concerned.
inline void throwIfFailed(Outcome outcome, const std::u16string& from, const std::u16string& to) {
    if (outcome.failed()) {
        throwError(outcome.error, outcome.side == Side::kSource ? from : to);
    }
}

/// Makes a call that gives -1 with errno set on failure, again where a signal interrupts it: 0 or the error
/// number.
template <typename Call>
int errorOf(Call call) noexcept {
    return retryInterrupted(call) == -1 ? errno : 0;
}

/// The status of an item itself, or of what is open: 0 or the error number.
inline int readStatus(Item item, struct stat& status) noexcept {
    return errorOf(
        [&] { return systemCalls().fstatat(item.folder, item.name, &status, AT_SYMLINK_NOFOLLOW); });
}
inline int readStatus(int descriptor, struct stat& status) noexcept {
    return errorOf([&] { return systemCalls().fstat(descriptor, &status); });
}

/// What unlinkat gives for an item: 0 or the error number. `flags` is 0 or AT_REMOVEDIR.
inline int unlinkItem(Item item, int flags) noexcept {
    return errorOf([&] { return systemCalls().unlinkat(item.folder, item.name, flags); });
}

/// The nine bits that a copy carries; set-uid, set-gid and the sticky bit are never among them.
inline constexpr mode_t kCopiedBits = 0777;

/// Whether two status records speak of one item, whatever their names.
inline bool isSameItem(const struct stat& one, const struct stat& other) noexcept {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

}  // namespace fl::filesystem::posix
