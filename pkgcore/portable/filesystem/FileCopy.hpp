#pragma once

#include <pkgcore/portable/filesystem/FileContent.hpp>

namespace fl::filesystem::posix {

/// What a folder is known to do to the permission bits asked for when a file is made in it.
struct CreationBits {
    mode_t granted = 0;
    mode_t taken = 0;
};

/// The nine bits that a copy carries; set-uid, set-gid and the sticky bit are never among them.
inline constexpr mode_t kCopiedBits = 0777;

/// Whether a copy carries the access and modification times of its source.
enum class Times : unsigned char { New, Carried };

/// 0 for the status of a regular file; for anything else the reason not to copy it as one.
int refusalToCopy(const struct stat& status) noexcept;

/// Gives an open item the access and modification times of a status record: 0 or the error number.
int carryTimes(const struct stat& status, int to) noexcept;

/// Copies regular files, one after the other.
class FileCopy {
public:
    explicit FileCopy(Times times = Times::New) noexcept : times_(times) {}

    /// Copies content and the nine permission bits to a file that must not exist and is created exclusively;
    /// on failure it is removed again. At no moment is it more open than its source. A source that is no
    /// regular file is refused; a pipe never blocks. `known` is for one folder of destinations and one
    /// operation.
    Outcome copyNew(Item from, Item to, CreationBits& known);

private:
    Outcome fill(int from, const struct stat& status, int to);

    Times times_;
    FileContent content_;
};

}  // namespace fl::filesystem::posix
