#include <pkgcore/portable/storage/providers/memory/MemoryContent.hpp>

#include <algorithm>
#include <cstring>

namespace foundation::storage::portable {

std::size_t MemoryContent::read(std::uint64_t offset, char* out, std::size_t count) const noexcept {
    if (offset >= size_) {
        return 0;
    }
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, size_ - offset));
    std::size_t done = 0;
    while (done < wanted) {
        const std::uint64_t at = offset + done;
        const Piece& piece = pieces_[static_cast<std::size_t>(at / kPieceSize)];
        const auto start = static_cast<std::size_t>(at % kPieceSize);
        const std::size_t taken = std::min(wanted - done, kPieceSize - start);
        std::memcpy(out + done, piece.get() + start, taken);
        done += taken;
    }
    return done;
}

MemoryContentBuilder::MemoryContentBuilder(const MemoryContent& old)
    : pieces_(old.pieces()), size_(old.size()) {}

/// One that has room and is nobody else's.
std::string& MemoryContentBuilder::lastPiece() {
    if (last_ && last_->size() == MemoryContent::kPieceSize) {
        finishPiece();
    }
    if (!last_) {
        last_ = std::make_shared<std::string>();
        const auto begun = static_cast<std::size_t>(size_ % MemoryContent::kPieceSize);
        if (begun > 0) {
            last_->assign(pieces_.back().get(), begun);
            pieces_.pop_back();
        }
    }
    return *last_;
}

void MemoryContentBuilder::finishPiece() {
    if (last_) {
        pieces_.emplace_back(last_, last_->data());
        last_.reset();
    }
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
    finishPiece();
    return std::make_shared<const MemoryContent>(pieces_, size_);
}

}  // namespace foundation::storage::portable
