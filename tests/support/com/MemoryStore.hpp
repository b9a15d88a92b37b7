#pragma once

#include "tests/support/com/StoreStream.hpp"

#include <cstddef>
#include <vector>

namespace test {

using Bytes = std::vector<std::uint8_t>;

/// A block of memory. Shared by streams; changed by one thread at a time.
class MemoryStore final : public Store {
public:
    enum class Mode {
        direct,     ///< changes reach the block at once
        transacted  ///< changes reach the block with Commit, and are forgotten with Revert
    };

    /// `most` is how many bytes there is room for.
    explicit MemoryStore(std::shared_ptr<Bytes> block, Mode mode = Mode::direct,
                         std::size_t most = std::size_t{1} << 30);

    std::uint64_t size() const override { return bytes_->size(); }
    Moved read(std::uint64_t position, void* bytes, ULONG count) override;
    Moved write(std::uint64_t position, const void* bytes, ULONG count) override;
    HRESULT setSize(std::uint64_t size) override;
    HRESULT commit() override;
    HRESULT revert() override;
    void describe(STATSTG& status) const override;

private:
    std::shared_ptr<Bytes> block_;
    std::shared_ptr<Bytes> bytes_;  ///< what is read and written: the block, or a copy of it
    std::size_t most_;
};

}  // namespace test
