#include <pkgcore/streams/StreamHelper.hpp>

#include <pkgcore/streams/StdIStreamAdaptor.hpp>
#include <pkgcore/streams/StdOStreamAdaptor.hpp>

#include <boost/thread/thread.hpp>

#include <memory>

namespace opc {

const std::size_t StreamHelper::BUFFER_SIZE = 16384;

namespace {

/// One side's answer: how many bytes moved, and whether it was done after that.
struct Progress {
    std::size_t count;
    bool done;
};

Progress readOnce(InputStream& in, std::uint8_t* buffer, std::size_t size) {
    const std::size_t count = in.read(buffer, size);
    return {count, in.isDone()};
}

Progress writeOnce(OutputStream& out, const std::uint8_t* buffer, std::size_t size) {
    const std::size_t count = out.write(buffer, size);
    return {count, out.isDone()};
}

/// Reads until there is something, or the input is done.
Progress readChunk(InputStream& in, std::uint8_t* buffer, std::size_t size) {
    Progress chunk = readOnce(in, buffer, size);
    while (chunk.count == 0 && !chunk.done) {
        boost::this_thread::yield();
        chunk = readOnce(in, buffer, size);
    }
    return chunk;
}

/// Writes until all is written, or the output is done.
Progress writeChunk(OutputStream& out, const std::uint8_t* buffer, std::size_t size) {
    Progress total = writeOnce(out, buffer, size);
    while (total.count < size && !total.done) {
        boost::this_thread::yield();
        const Progress more = writeOnce(out, buffer + total.count, size - total.count);
        total = {total.count + more.count, more.done};
    }
    return total;
}

}  // namespace

bool StreamHelper::copyStreamToStream(InputStream& in, OutputStream& out) {
    const std::unique_ptr<std::uint8_t[]> buffer(new std::uint8_t[BUFFER_SIZE]);
    Progress written{0, false};
    Progress chunk{0, false};
    while (!written.done && !chunk.done) {
        chunk = readChunk(in, buffer.get(), BUFFER_SIZE);
        if (chunk.count == 0) {
            return true;
        }
        written = writeChunk(out, buffer.get(), chunk.count);
        if (written.count < chunk.count) {
            return false;
        }
    }
    return true;
}

bool StreamHelper::copyStreamToStream(std::istream& in, std::ostream& out) {
    StdIStreamAdaptor source(in);
    StdOStreamAdaptor sink(out);
    return copyStreamToStream(source, sink);
}

bool StreamHelper::copyStreamToStream(std::istream& in, OutputStream& out) {
    StdIStreamAdaptor source(in);
    return copyStreamToStream(source, out);
}

bool StreamHelper::copyStreamToStream(InputStream& in, std::ostream& out) {
    StdOStreamAdaptor sink(out);
    return copyStreamToStream(in, sink);
}

}  // namespace opc
