#pragma once

#include <pkgcore/streams/OutputStream.hpp>

#include <ostream>

namespace opc {

/// Writes to a standard stream, which stays the caller's and must outlive the adaptor.
class PKGCORE_API StdOStreamAdaptor : public OutputStream {
public:
    /// Writes to `stream`; nothing is asked of it yet.
    explicit StdOStreamAdaptor(std::ostream& stream);
    ~StdOStreamAdaptor() override;

    /// Returns by how far the put position moved: a stream that cannot tell its position (a pipe, a terminal)
    /// makes this 0 even if the bytes went out, so it is no sink for StreamHelper.
    std::size_t write(const std::uint8_t* buffer, std::size_t count) override;
    /// True when the stream's state is anything but good.
    bool isDone() const override;
    void flush() override;
    /// Leaves the stream as it is.
    void close() override;

private:
    std::ostream& stream_;
};

}  // namespace opc
