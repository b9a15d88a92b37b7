#pragma once

#include <pkgcore/platform/com/IStream.hpp>
#include <pkgcore/streams/InputStream.hpp>

namespace opc {

/// Reads a COM stream from where it stands. The stream stays the caller's (no AddRef, no Release) and must
/// outlive the adaptor. Starts open.
class PKGCORE_API COMIStreamInAdaptor : public InputStream {
public:
    /// Reads `stream`; nothing is asked of it yet.
    explicit COMIStreamInAdaptor(IStream& stream);
    ~COMIStreamInAdaptor() override;

    /// After close(): seeks to the beginning; stays closed where the stream refuses that.
    void open() override;

    /// COM counts in 32 bits: of a larger `count` the low 32 bits are asked for. S_OK and E_PENDING mean more
    /// to come; any other result makes the adaptor done. Bytes that come with a failure are reported all the
    /// same.
    std::size_t read(std::uint8_t* buffer, std::size_t count) override;

    /// What the last read said, or true after close().
    bool isDone() const override;
    void close() override;

private:
    bool open_ = true;
    bool done_ = false;
    IStream* stream_;
};

}  // namespace opc
