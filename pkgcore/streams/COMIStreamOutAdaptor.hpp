#pragma once

#include <pkgcore/platform/com/IStream.hpp>
#include <pkgcore/streams/OutputStream.hpp>

namespace opc {

/// Writes to a COM stream from where it stands. The stream stays the caller's (no AddRef, no Release) and
/// must outlive the adaptor.
class PKGCORE_API COMIStreamOutAdaptor : public OutputStream {
public:
    /// Writes to `stream`; nothing is asked of it yet.
    explicit COMIStreamOutAdaptor(IStream& stream);
    ~COMIStreamOutAdaptor() override;

    /// Of a `count` above 32 bits the low 32 bits are written. S_OK and E_PENDING mean that more can be
    /// written; any other result makes the adaptor done.
    std::size_t write(const std::uint8_t* buffer, std::size_t count) override;
    bool isDone() const override;
    /// Commits the stream; the result is not looked at.
    void flush() override;
    /// Does nothing: no commit, no release.
    void close() override;

private:
    bool done_ = false;
    IStream* stream_;
};

}  // namespace opc
