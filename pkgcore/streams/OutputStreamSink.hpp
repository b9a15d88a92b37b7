#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/streams/OutputStream.hpp>

#include <boost/iostreams/categories.hpp>

#include <ios>

namespace opc {

/// An OutputStream as a sink device of Boost.Iostreams that can be flushed. Copies of the device refer to the
/// same stream, which stays the caller's and must outlive them.
class PKGCORE_API OutputStreamSink {
public:
    /// What Boost.Iostreams asks of a device.
    /// @{
    using char_type = char;
    struct category : boost::iostreams::sink_tag, boost::iostreams::flushable_tag {};
    /// @}

    /// Writes to `stream`; nothing is asked of it yet.
    explicit OutputStreamSink(OutputStream& stream);

    /// What the stream accepted; the stream is not asked whether it is done before.
    std::streamsize write(const char* buffer, std::streamsize count);

    /// Flushes the stream; always true, since a stream does not tell whether that had an effect.
    bool flush();

private:
    OutputStream& stream_;
};

}  // namespace opc
