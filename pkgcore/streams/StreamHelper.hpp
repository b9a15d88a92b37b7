#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/streams/InputStream.hpp>
#include <pkgcore/streams/OutputStream.hpp>

#include <cstddef>
#include <istream>
#include <ostream>

namespace opc {

/// Copies all that is left in an input to an output, in chunks of 16384 bytes, on the caller's thread.
///
/// A side that is not ready is asked again, with the thread yielded between the attempts, as long as it is
/// not done: there is no time-out. Nothing is opened, closed or flushed: open before, flush and close after,
/// and look at the output's state then.
///
/// The result is false exactly when the output became done while a chunk was partly unwritten. It is true for
/// an input that is empty or closed, and also where the output became done right after it had taken a whole
/// chunk, although the input may hold more. Exceptions of the streams pass through.
class PKGCORE_API StreamHelper {
public:
    /// Whether the output took all that it was given; see the class. A standard stream is read from its
    /// current position, and one that is written to must be able to tell its position (StdOStreamAdaptor).
    /// @{
    static bool copyStreamToStream(InputStream& in, OutputStream& out);
    static bool copyStreamToStream(std::istream& in, std::ostream& out);
    static bool copyStreamToStream(std::istream& in, OutputStream& out);
    static bool copyStreamToStream(InputStream& in, std::ostream& out);
    /// @}

private:
    static const std::size_t BUFFER_SIZE;
};

}  // namespace opc
