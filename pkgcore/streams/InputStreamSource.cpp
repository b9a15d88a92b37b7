#include <pkgcore/streams/InputStreamSource.hpp>

namespace opc {

InputStreamSource::InputStreamSource(InputStream& stream) : stream_(stream) {}

std::streamsize InputStreamSource::read(char* buffer, std::streamsize count) {
    if (stream_.isDone()) {
        return -1;
    }
    return static_cast<std::streamsize>(
        stream_.read(reinterpret_cast<std::uint8_t*>(buffer), static_cast<std::size_t>(count)));
}

}  // namespace opc
