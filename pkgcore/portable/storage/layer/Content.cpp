#include <pkgcore/portable/storage/layer/Content.hpp>

#include <pkgcore/portable/storage/layer/Reading.hpp>

#include <cstring>

namespace foundation::storage::portable {

using provider::Reader;
using provider::Writer;

namespace {

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;

class Block {
public:
    Block() : bytes_(new char[kBlockSize]) {}

    /// How many bytes were read; fewer than a block at the end alone.
    std::size_t fill(const Spot& from, Reader& reader) {
        return from.located([&] { return readNext(reader, bytes_.get(), kBlockSize); });
    }
    const char* data() const noexcept { return bytes_.get(); }

private:
    std::unique_ptr<char[]> bytes_;
};

/// Rather before all of it was written than after.
void refuseTooLarge(const Reader& reader, const Spot& to) {
    const std::optional<std::uint64_t> size = reader.size();
    if (size && *size > to.traits().maxFileSize) {
        to.fail(vfs::ErrorCode::FileTooLarge);
    }
}

}  // namespace

void pour(const Spot& from, Reader& reader, const Spot& to, Writer& writer) {
    Block block;
    while (const std::size_t count = block.fill(from, reader)) {
        to.located([&] { writer.write(block.data(), count); });
    }
}

void copyContent(const Spot& from, const Spot& to, provider::WriteMode mode) {
    const std::unique_ptr<Reader> reader = from.openReader();
    refuseTooLarge(*reader, to);
    const std::unique_ptr<Writer> writer = to.openWriter(mode);
    pour(from, *reader, to, *writer);
    to.located([&writer] { writer->commit(); });
}

// The sizes tell of a source that ends early at each reading.
bool haveSameContent(const Spot& one, const Spot& other) {
    const std::unique_ptr<Reader> first = one.openReader();
    const std::unique_ptr<Reader> second = other.openReader();
    if (first->size() && second->size() && first->size() != second->size()) {
        return false;
    }
    Block left;
    Block right;
    std::size_t count = 0;
    do {
        count = left.fill(one, *first);
        if (right.fill(other, *second) != count || std::memcmp(left.data(), right.data(), count) != 0) {
            return false;
        }
    } while (count > 0);
    return true;
}

}  // namespace foundation::storage::portable
