#include <pkgcore/streams/StdIStreamAdaptor.hpp>

namespace opc {

StdIStreamAdaptor::StdIStreamAdaptor(std::istream& stream) : stream_(stream) {}

StdIStreamAdaptor::~StdIStreamAdaptor() = default;

void StdIStreamAdaptor::open() {
    if (!open_) {
        stream_.clear();
        stream_.seekg(0, std::ios::beg);
        open_ = true;
    }
}

std::size_t StdIStreamAdaptor::read(std::uint8_t* buffer, std::size_t count) {
    if (!open_) {
        return 0;
    }
    stream_.read(reinterpret_cast<char*>(buffer), static_cast<std::streamsize>(count));
    return static_cast<std::size_t>(stream_.gcount());
}

bool StdIStreamAdaptor::isDone() const { return !open_ || !stream_.good(); }

void StdIStreamAdaptor::close() { open_ = false; }

}  // namespace opc
