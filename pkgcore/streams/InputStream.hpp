#pragma once

#include <pkgcore/core/Export.hpp>

#include <boost/core/noncopyable.hpp>

#include <cstddef>
#include <cstdint>

namespace opc {

/// A source of bytes. No operation throws or reports a failure by itself: failures show as short counts and
/// isDone(). One thread at a time uses a stream.
///
/// The order of the operations is that of the virtual table: it is part of the binary interface.
class PKGCORE_API InputStream : private boost::noncopyable {
public:
    /// Makes a closed stream readable again, from its beginning if the kind of stream can. Nothing happens to
    /// an open one.
    virtual void open() = 0;

    /// Reads up to `count` bytes into `buffer` and returns how many; 0 means none for now, or the end: see
    /// isDone().
    virtual std::size_t read(std::uint8_t* buffer, std::size_t count) = 0;

    /// Whether no more data will come.
    virtual bool isDone() const = 0;

    /// Stops reading.
    virtual void close() = 0;

protected:
    InputStream();
    virtual ~InputStream();
};

}  // namespace opc
