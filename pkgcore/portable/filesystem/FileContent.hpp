#pragma once

#include <pkgcore/portable/filesystem/Outcome.hpp>

#include <cstddef>
#include <memory>

namespace fl::filesystem::posix {

/// Copies the content of open files, one after the other, in the cheapest way that the file system offers: by
/// sharing blocks, else around the holes, else into blocks that are reserved beforehand. Keeps for the next
/// file what the last one has shown: the buffer, and that blocks cannot be shared.
class FileContent {
public:
    /// Copies all of `from`, which stands at its start and has the status given, to the empty file `to`.
    /// Reads until the end, whatever size the status tells: files of /proc have none, others grow.
    Outcome copy(int from, const struct stat& status, int to);

private:
    bool shareBlocks(int from, int to) noexcept;
    Outcome copyIslands(int from, int to, bool& copied);
    Outcome copyWhole(int from, const struct stat& status, int to);
    Outcome copyBytes(int from, int to, off_t count, off_t& copied);
    void provideBuffer(off_t fileSize);

    std::unique_ptr<char[]> buffer_;
    std::size_t bufferSize_ = 0;
    bool mayShare_ = true;
};

}  // namespace fl::filesystem::posix
