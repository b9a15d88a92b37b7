#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/streams/InputStream.hpp>

#include <boost/iostreams/categories.hpp>

#include <ios>

namespace opc {

/// An InputStream as a source device of Boost.Iostreams. Copies of the device refer to the same stream, which
/// stays the caller's and must outlive them.
class PKGCORE_API InputStreamSource {
public:
    /// What Boost.Iostreams asks of a device.
    /// @{
    using char_type = char;
    using category = boost::iostreams::source_tag;
    /// @}

    /// Reads `stream`; nothing is asked of it yet.
    explicit InputStreamSource(InputStream& stream);

    /// -1 when the stream is done; else what it read, where 0 means none for now and not the end.
    std::streamsize read(char* buffer, std::streamsize count);

private:
    InputStream& stream_;
};

}  // namespace opc
