#pragma once

#include <cstddef>
#include <memory>
#include <utility>

namespace fl::filesystem::posix {

/// One of the few places for readers that keep a descriptor in use: descriptors belong to the whole process,
/// so these places do too. Given back when the owner ends.
class StreamingSlot {
public:
    StreamingSlot() noexcept = default;
    StreamingSlot(StreamingSlot&& other) noexcept : held_(std::exchange(other.held_, false)) {}
    StreamingSlot& operator=(StreamingSlot&& other) noexcept {
        release();
        held_ = std::exchange(other.held_, false);
        return *this;
    }
    ~StreamingSlot() { release(); }

    /// False where all places are taken.
    bool acquire() noexcept;
    void release() noexcept;

private:
    bool held_ = false;
};

/// Reads the entries of an open folder, "." and ".." left out, in the order of the system.
///
/// A folder whose records fit into one block is read at once and kept as exactly those records, so that
/// nested listings hold neither a descriptor nor a block each. Bigger ones are read a block at a time; while
/// many of those are under way, a further one is read into memory as a whole.
class FolderReader {
public:
    /// Reads from `folder`, which stays the caller's and must be open until isComplete().
    explicit FolderReader(int folder);
    FolderReader(FolderReader&&) noexcept = default;
    FolderReader& operator=(FolderReader&&) noexcept = default;

    /// Moves to the next entry, at first to the first one. False at the end and on an error.
    bool next();

    /// The name of the entry, NUL-terminated; valid until the next call of next() or drain().
    const char* name() const noexcept;
    std::size_t nameLength() const noexcept;

    /// The kind of the entry as one of the system's DT_ constants, DT_UNKNOWN where the file system does not
    /// tell.
    unsigned char type() const noexcept;

    /// Once next() has given false: 0 at the end, or the error number with which reading ended.
    int error() const noexcept { return error_; }

    /// Whether everything still to come is in memory and the descriptor no longer needed.
    bool isComplete() const noexcept { return complete_; }

    /// Reads all that is left into memory; the entry that the reader stands on stays the same.
    void drain();

private:
    std::size_t readBatch(char* to, std::size_t room) noexcept;
    std::size_t readWhatFits(char* block) noexcept;
    void keep(const char* records, std::size_t size, std::size_t capacity);
    bool refill();

    int folder_;
    int error_ = 0;
    bool complete_ = false;
    StreamingSlot slot_;
    std::unique_ptr<char[]> block_;
    const char* entry_ = nullptr;
    const char* next_ = nullptr;
    const char* end_ = nullptr;
};

}  // namespace fl::filesystem::posix
