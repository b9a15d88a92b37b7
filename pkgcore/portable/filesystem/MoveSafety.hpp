#pragma once

#include <pkgcore/portable/filesystem/Item.hpp>

/// What has to be so before a move that was made by copying removes its source.
namespace fl::filesystem::posix {

/// The file system that holds a folder, from this moment on: no failure to write to it is missed.
class Disk {
public:
    /// The folder may be one that serves as a way alone (O_PATH).
    explicit Disk(int folder) noexcept;

    /// Returns when what was written is on the disk and not in memory alone, where a failing power supply
    /// finds it: 0, or the error number.
    int sync() const noexcept;

private:
    FileDescriptor folder_;
    int error_;
};

/// What has become of an item since it was looked at: ESTALE where another one has taken its place, EBUSY
/// where a file was written to, else 0, or the error number of looking.
int changeSince(const struct stat& before, Item item) noexcept;

}  // namespace fl::filesystem::posix
