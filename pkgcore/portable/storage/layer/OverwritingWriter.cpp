#include <pkgcore/portable/storage/layer/OverwritingWriter.hpp>

#include <pkgcore/portable/storage/layer/Content.hpp>

#include <algorithm>

namespace foundation::storage::portable {

namespace {

constexpr std::size_t kBlockSize = std::size_t{64} * 1024;

/// Reads up to `count` bytes, for `take` to have.
template <typename Take>
void readUpTo(provider::Reader& reader, std::uint64_t count, Take take) {
    const std::unique_ptr<char[]> block(new char[kBlockSize]);
    while (count > 0) {
        const std::size_t wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, kBlockSize));
        const std::size_t taken = reader.read(block.get(), wanted);
        if (taken == 0) {
            return;
        }
        take(block.get(), taken);
        count -= taken;
    }
}

}  // namespace

OverwritingWriter::OverwritingWriter(const Spot& file) : file_(file) { begin(); }

/// Stands at the position again, in a new content.
void OverwritingWriter::begin() {
    old_ = file_.openReader();
    writer_ = file_.openWriter(provider::WriteMode::Create);
    readUpTo(*old_, position_,
             [this](const char* bytes, std::size_t count) { writer_->write(bytes, count); });
}

void OverwritingWriter::write(const char* bytes, std::size_t count) {
    if (!writer_) {
        begin();
    }
    if (hasRest_) {
        std::uint64_t skipped = 0;
        readUpTo(*old_, count, [&skipped](const char* /*bytes*/, std::size_t taken) { skipped += taken; });
        hasRest_ = skipped == count;
    }
    writer_->write(bytes, count);
    position_ += count;
}

// Once the rest is written behind the position, going on at the position takes a new content.
void OverwritingWriter::commit() {
    if (hasRest_) {
        pour(file_, *old_, file_, *writer_);
    }
    writer_->commit();
    if (hasRest_) {
        writer_.reset();
    }
}

void OverwritingWriter::discard() noexcept {
    if (writer_) {
        writer_->discard();
    }
}

}  // namespace foundation::storage::portable
