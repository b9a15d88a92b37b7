#pragma once

#include <pkgcore/streams/OutputStream.hpp>

#include <vector>

namespace opc {

/// Appends to a vector, which stays the caller's and must outlive the adaptor. Accepts everything and is
/// never done.
class PKGCORE_API ByteArrayOutAdaptor : public OutputStream {
public:
    /// Writing begins behind the bytes that the vector holds now.
    explicit ByteArrayOutAdaptor(std::vector<std::uint8_t>& bytes);
    ~ByteArrayOutAdaptor() override;

    /// Makes the vector end with what is written: bytes that somebody else put behind the position meanwhile
    /// are cut. Throws std::bad_alloc or std::length_error, and then nothing is written, where memory does
    /// not suffice.
    std::size_t write(const std::uint8_t* buffer, std::size_t count) override;
    bool isDone() const override;
    void flush() override;
    /// Does nothing: a closed adaptor still accepts writes.
    void close() override;

private:
    std::vector<std::uint8_t>& bytes_;
    std::size_t position_;
};

}  // namespace opc
