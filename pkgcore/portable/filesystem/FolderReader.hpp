#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace fl::filesystem::posix {

/// Reads the entries of an open folder, "." and ".." left out, in the order of the system.
///
/// A folder whose records fit into one block is kept as exactly those records, bigger ones are read a block
/// at a time. A reader that is parked holds one record and no descriptor, so that a walk can leave any number
/// of listings behind on its way down.
class FolderReader {
public:
    /// Reads from `folder`, which stays the caller's and must be open while the reader is not parked.
    explicit FolderReader(int folder);
    FolderReader(FolderReader&&) noexcept = default;
    FolderReader& operator=(FolderReader&&) noexcept = default;

    /// Moves to the next entry, at first to the first one. False at the end and on an error. Not while
    /// parked.
    bool next();

    /// The name of the entry, NUL-terminated; valid until the next call of next(), park() or resume().
    const char* name() const noexcept;
    std::size_t nameLength() const noexcept;

    /// The kind of the entry as one of the system's DT_ constants, DT_UNKNOWN where the file system does not
    /// tell.
    unsigned char type() const noexcept;

    /// Once next() has given false or the reader isAstray(): 0, or the error number with which reading ended.
    int error() const noexcept { return error_; }

    /// Lets go of the folder and of all records but that of the entry on which the reader stands; it must
    /// stand on one.
    void park();
    bool isParked() const noexcept { return parked_; }

    /// Goes on in the same folder, which was opened anew. The place is looked for by the entry's name, first
    /// where it was, then from the beginning, since a file system may have moved it. Where the name is gone
    /// the reader isAstray(): it still stands on the entry, but what follows is what the file system takes
    /// for the place behind it.
    void resume(int folder);
    bool isAstray() const noexcept { return astray_; }

private:
    std::size_t readBatch(char* to, std::size_t room) noexcept;
    std::size_t readWhatFits(char* block) noexcept;
    void load();
    void keep(const char* records, std::size_t size, std::size_t capacity);
    void standOn(std::unique_ptr<char[]> record) noexcept;
    bool refill();
    bool seek(std::int64_t position) noexcept;
    bool findAt(std::int64_t position, const char* wanted);
    bool findAnywhere(const char* wanted);
    bool isNamed(const char* wanted) const noexcept;

    int folder_;
    int error_ = 0;
    bool complete_ = false;
    bool parked_ = false;
    bool astray_ = false;
    std::int64_t here_ = 0;    // where in the folder the entry begins, in the numbers of the file system
    std::int64_t behind_ = 0;  // where the record after it begins
    std::size_t capacity_ = 0;
    std::unique_ptr<char[]> block_;
    const char* entry_ = nullptr;
    const char* next_ = nullptr;
    const char* end_ = nullptr;
};

}  // namespace fl::filesystem::posix
