#pragma once

#include <boost/container/small_vector.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace foundation::storage::portable {

/// The content of a file in memory, which never changes: pieces of one size, the last one shorter. Copies
/// share the pieces.
class MemoryContent {
public:
    static constexpr std::size_t kPieceSize = std::size_t{64} * 1024;
    using Piece = std::shared_ptr<const char>;
    /// The first one, which most files have alone, in the object itself.
    using Pieces = boost::container::small_vector<Piece, 1>;

    MemoryContent() = default;
    MemoryContent(Pieces pieces, std::uint64_t size) noexcept : pieces_(std::move(pieces)), size_(size) {}

    std::uint64_t size() const noexcept { return size_; }
    const Pieces& pieces() const noexcept { return pieces_; }

    /// As many bytes as are wanted unless the end comes first.
    std::size_t read(std::uint64_t offset, char* out, std::size_t count) const noexcept;

private:
    Pieces pieces_;
    std::uint64_t size_ = 0;
};

using SharedContent = std::shared_ptr<const MemoryContent>;

/// A content that is being written.
class MemoryContentBuilder {
public:
    MemoryContentBuilder() = default;

    /// Goes on behind an old content.
    explicit MemoryContentBuilder(const MemoryContent& old);

    void add(const char* bytes, std::size_t count);

    /// What was written so far; the builder can go on.
    SharedContent content();

private:
    std::string& lastPiece();
    void finishPiece();

    MemoryContent::Pieces pieces_;
    std::shared_ptr<std::string> last_;  ///< behind the pieces, while nobody else has it
    std::uint64_t size_ = 0;
};

}  // namespace foundation::storage::portable
