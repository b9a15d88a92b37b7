#include <pkgcore/streams/ByteArrayOutAdaptor.hpp>

#include <algorithm>

namespace opc {

ByteArrayOutAdaptor::ByteArrayOutAdaptor(std::vector<std::uint8_t>& bytes)
    : bytes_(bytes), position_(bytes.size()) {}

ByteArrayOutAdaptor::~ByteArrayOutAdaptor() = default;

std::size_t ByteArrayOutAdaptor::write(const std::uint8_t* buffer, std::size_t count) {
    bytes_.resize(position_ + count);
    std::copy_n(buffer, count, bytes_.data() + position_);
    position_ += count;
    return count;
}

bool ByteArrayOutAdaptor::isDone() const { return false; }

void ByteArrayOutAdaptor::flush() {}

void ByteArrayOutAdaptor::close() {}

}  // namespace opc
