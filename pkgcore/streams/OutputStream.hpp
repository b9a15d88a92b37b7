#pragma once

#include <pkgcore/core/Export.hpp>

#include <boost/core/noncopyable.hpp>

#include <cstddef>
#include <cstdint>

namespace opc {

/// A sink of bytes. No operation throws or reports a failure by itself: failures show as short counts and
/// isDone(). One thread at a time uses a stream.
///
/// The order of the operations is that of the virtual table: it is part of the binary interface.
class PKGCORE_API OutputStream : private boost::noncopyable {
public:
    /// Writes up to `count` bytes of `buffer` and returns how many were accepted.
    virtual std::size_t write(const std::uint8_t* buffer, std::size_t count) = 0;

    /// Whether the sink will accept nothing more, for an error or for good.
    virtual bool isDone() const = 0;

    /// Pushes what is buffered down.
    virtual void flush() = 0;

    /// Stops writing.
    virtual void close() = 0;

protected:
    OutputStream();
    virtual ~OutputStream();
};

}  // namespace opc
