#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace foundation::storage::portable {

/// The content of a file in memory, which never changes: pieces of one size, the last one shorter. Copies
/// share the pieces.
class MemoryContent {
public:
    static constexpr std::size_t kPieceSize = std::size_t{64} * 1024;
    using Piece = std::shared_ptr<const std::string>;

    MemoryContent() = default;
    MemoryContent(std::vector<Piece> pieces, std::uint64_t size) noexcept
        : pieces_(std::move(pieces)), size_(size) {}

    std::uint64_t size() const noexcept { return size_; }
    const std::vector<Piece>& pieces() const noexcept { return pieces_; }

    /// As many bytes as are wanted unless the end comes first.
    std::size_t read(std::uint64_t offset, char* out, std::size_t count) const noexcept;

private:
    std::vector<Piece> pieces_;
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

    std::vector<MemoryContent::Piece> pieces_;
    std::shared_ptr<std::string> last_;  ///< the last one of the pieces while nobody else has it
    std::uint64_t size_ = 0;
};

}  // namespace foundation::storage::portable
