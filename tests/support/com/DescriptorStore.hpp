#pragma once

#include "tests/support/com/StoreStream.hpp"

namespace test {

/// An open descriptor of the host: a file, or something that does not know positions, as a pipe. What is not
/// there yet, or cannot be taken yet, by a descriptor that does not block is pending.
class DescriptorStore final : public Store {
public:
    /// Takes the descriptor over.
    explicit DescriptorStore(int descriptor);
    ~DescriptorStore() override;

    bool canSeek() const override { return canSeek_; }
    std::uint64_t size() const override;
    Moved read(std::uint64_t position, void* bytes, ULONG count) override;
    Moved write(std::uint64_t position, const void* bytes, ULONG count) override;
    HRESULT setSize(std::uint64_t size) override;
    HRESULT commit() override;
    /// Changes are direct: there is nothing to go back to.
    HRESULT revert() override { return S_OK; }
    void describe(STATSTG& status) const override;

private:
    int descriptor_;
    bool canSeek_;
};

}  // namespace test
