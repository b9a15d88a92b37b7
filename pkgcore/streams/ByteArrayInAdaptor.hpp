#pragma once

#include <pkgcore/streams/InputStream.hpp>

#include <vector>

namespace opc {

/// Reads the bytes of a vector, which stays the caller's, must outlive the adaptor and may change between the
/// calls. Starts open.
class PKGCORE_API ByteArrayInAdaptor : public InputStream {
public:
    /// Reads `bytes`; nothing is asked of it yet.
    explicit ByteArrayInAdaptor(const std::vector<std::uint8_t>& bytes);
    ~ByteArrayInAdaptor() override;

    /// Reopens at the first byte after close(); an open adaptor keeps its position.
    void open() override;
    std::size_t read(std::uint8_t* buffer, std::size_t count) override;
    /// True when closed, and at the end of the vector.
    bool isDone() const override;
    void close() override;

private:
    const std::vector<std::uint8_t>& bytes_;
    std::size_t position_ = 0;
    bool open_ = true;
};

}  // namespace opc
