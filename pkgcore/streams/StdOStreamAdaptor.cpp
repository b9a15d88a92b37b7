#include <pkgcore/streams/StdOStreamAdaptor.hpp>

namespace opc {

StdOStreamAdaptor::StdOStreamAdaptor(std::ostream& stream) : stream_(stream) {}

StdOStreamAdaptor::~StdOStreamAdaptor() = default;

std::size_t StdOStreamAdaptor::write(const std::uint8_t* buffer, std::size_t count) {
    const std::streamoff before = stream_.tellp();
    stream_.write(reinterpret_cast<const char*>(buffer), static_cast<std::streamsize>(count));
    const std::streamoff after = stream_.tellp();
    // A write that fails makes the position untellable (-1): a difference below 0 must never pass for a huge
    // count.
    return after > before ? static_cast<std::size_t>(after - before) : 0;
}

bool StdOStreamAdaptor::isDone() const { return !stream_.good(); }

void StdOStreamAdaptor::flush() { stream_.flush(); }

void StdOStreamAdaptor::close() {}

}  // namespace opc
