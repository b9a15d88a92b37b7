#pragma once

#include <pkgcore/streams/InputStream.hpp>

#include <istream>

namespace opc {

/// Reads a standard stream from where it stands. The stream stays the caller's and must outlive the adaptor.
/// Starts open.
class PKGCORE_API StdIStreamAdaptor : public InputStream {
public:
    /// Reads `stream`; nothing is asked of it yet.
    explicit StdIStreamAdaptor(std::istream& stream);
    ~StdIStreamAdaptor() override;

    /// After close(): clears the stream's state and seeks to its beginning.
    void open() override;
    std::size_t read(std::uint8_t* buffer, std::size_t count) override;
    /// True when closed, and when the stream's state is anything but good.
    bool isDone() const override;
    /// Leaves the stream as it is.
    void close() override;

private:
    std::istream& stream_;
    bool open_ = true;
};

}  // namespace opc
