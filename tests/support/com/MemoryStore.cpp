#include "tests/support/com/MemoryStore.hpp"

#include <algorithm>
#include <utility>

namespace test {

MemoryStore::MemoryStore(std::shared_ptr<Bytes> block, Mode mode, std::size_t most)
    : block_(std::move(block)),
      bytes_(mode == Mode::direct ? block_ : std::make_shared<Bytes>(*block_)),
      most_(most) {}

Moved MemoryStore::read(std::uint64_t position, void* bytes, ULONG count) {
    const std::uint64_t left = position < size() ? size() - position : 0;
    const auto taken = static_cast<ULONG>(std::min<std::uint64_t>(count, left));
    std::copy_n(bytes_->data() + std::min(position, size()), taken, static_cast<std::uint8_t*>(bytes));
    return {taken < count ? S_FALSE : S_OK, taken};
}

Moved MemoryStore::write(std::uint64_t position, const void* bytes, ULONG count) {
    const std::uint64_t room = position < most_ ? most_ - position : 0;
    const auto taken = static_cast<ULONG>(std::min<std::uint64_t>(count, room));
    if (taken > 0) {
        bytes_->resize(std::max<std::size_t>(bytes_->size(), position + taken));
        std::copy_n(static_cast<const std::uint8_t*>(bytes), taken, bytes_->data() + position);
    }
    return {taken < count ? STG_E_MEDIUMFULL : S_OK, taken};
}

HRESULT MemoryStore::setSize(std::uint64_t size) {
    if (size > most_) {
        return STG_E_MEDIUMFULL;
    }
    bytes_->resize(size);
    return S_OK;
}

HRESULT MemoryStore::commit() {
    *block_ = *bytes_;
    return S_OK;
}

HRESULT MemoryStore::revert() {
    *bytes_ = *block_;
    return S_OK;
}

void MemoryStore::describe(STATSTG& status) const { status.grfMode = STGM_READWRITE; }

}  // namespace test
