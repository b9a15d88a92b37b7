#include <pkgcore/portable/storage/providers/memory/MemoryContent.hpp>

#include <algorithm>

namespace foundation::storage::portable {

std::size_t MemoryContent::read(std::uint64_t offset, char* out, std::size_t count) const noexcept {
    if (offset >= size_) {
        return 0;
    }
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - offset));
    std::size_t done = 0;
    while (done < wanted) {
        const std::uint64_t at = offset + done;
        const std::string& piece = *pieces_[static_cast<std::size_t>(at / kPieceSize)];
        const auto start = static_cast<std::size_t>(at % kPieceSize);
        const std::size_t taken = std::min(wanted - done, piece.size() - start);
        piece.copy(out + done, taken, start);
        done += taken;
    }
    return done;
}

MemoryContentBuilder::MemoryContentBuilder(const MemoryContent& old)
    : pieces_(old.pieces()), size_(old.size()) {}

/// One that has room and is nobody else's.
std::string& MemoryContentBuilder::lastPiece() {
    const bool isFull = pieces_.empty() || pieces_.back()->size() == MemoryContent::kPieceSize;
    if (isFull) {
        last_ = std::make_shared<std::string>();
        pieces_.push_back(last_);
    } else if (!last_) {
        last_ = std::make_shared<std::string>(*pieces_.back());
        pieces_.back() = last_;
    }
    return *last_;
}

void MemoryContentBuilder::add(const char* bytes, std::size_t count) {
    while (count > 0) {
        std::string& piece = lastPiece();
        const std::size_t taken = std::min(count, MemoryContent::kPieceSize - piece.size());
        piece.append(bytes, taken);
        bytes += taken;
        count -= taken;
        size_ += taken;
    }
}

SharedContent MemoryContentBuilder::content() {
    last_.reset();
    return std::make_shared<const MemoryContent>(pieces_, size_);
}

}  // namespace foundation::storage::portable
