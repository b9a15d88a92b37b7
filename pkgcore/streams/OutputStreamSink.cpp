#include <pkgcore/streams/OutputStreamSink.hpp>

namespace opc {

OutputStreamSink::OutputStreamSink(OutputStream& stream) : stream_(stream) {}

std::streamsize OutputStreamSink::write(const char* buffer, std::streamsize count) {
    return static_cast<std::streamsize>(
        stream_.write(reinterpret_cast<const std::uint8_t*>(buffer), static_cast<std::size_t>(count)));
}

bool OutputStreamSink::flush() {
    stream_.flush();
    return true;
}

}  // namespace opc
