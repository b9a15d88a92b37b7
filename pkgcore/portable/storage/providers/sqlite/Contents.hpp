#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace foundation::storage::sqlite {

class Connection;
class Query;
struct Entry;

/// What no entry leads to, in whole or in part: it is being made, or it is gone but still being read, or
/// whoever made it has died. See Pins.hpp for how these are told apart.
struct Orphan {
    enum class Kind : unsigned char { Content, Folder };

    std::int64_t number = 0;  ///< of the content or folder
    Kind kind = Kind::Content;
    std::int64_t first = 0;  ///< the chunks of a content from this one on
};

/// Chunks of contents and the list of orphans, within a transaction. Whatever is read is compared with its
/// seal: "damaged" otherwise.
class Contents {
public:
    explicit Contents(Connection& connection) noexcept : connection_(connection) {}

    /// Returns the seal.
    std::int64_t putChunk(std::int64_t content, std::int64_t index, std::string_view bytes);

    /// Whether a chunk is there with this seal; its bytes are not read.
    bool hasChunk(std::int64_t content, std::int64_t index, std::int64_t seal);

    /// The first `size` bytes of a chunk that has as many or, while the file is being appended to, more.
    void readChunk(std::int64_t content, std::int64_t index, char* out, std::size_t size);
    void readChunk(std::int64_t content, std::int64_t index, std::size_t size, std::string& bytes);

    /// The same of a row with the columns seal and bytes, beginning with `column`; valid as long as the row.
    std::string_view chunkIn(const Query& row, int column, std::int64_t id, std::size_t size) const;

    /// Erases the last ones of the chunks from `first` on, at most so many. True when none is left.
    bool eraseLastChunks(std::int64_t content, std::int64_t first, std::int64_t count);

    std::optional<Orphan> findOrphan(std::int64_t number);
    /// The one with the highest number below `below`.
    std::optional<Orphan> lastOrphan(std::int64_t below);
    void putOrphan(const Orphan& orphan);
    void eraseOrphan(std::int64_t number);

    /// Gives up what an entry leads to, which is erased or replaced. True if that leaves an orphan, which
    /// sweep() erases.
    bool retire(const Entry& entry);

private:
    template <typename Take>
    void takeChunk(std::int64_t content, std::int64_t index, std::size_t size, Take take);

    Connection& connection_;
};

/// The number of a row with a part of a content.
std::int64_t chunkId(std::int64_t content, std::int64_t index);

/// Whether the content is in several rows, or may grow to that at any time. A smaller one is read and erased
/// at once.
bool isLarge(const Entry& file) noexcept;

/// How many chunks hold so many bytes.
std::int64_t chunkCount(std::int64_t size) noexcept;

}  // namespace foundation::storage::sqlite
