#include <pkgcore/streams/ByteArrayInAdaptor.hpp>

#include <algorithm>

namespace opc {

ByteArrayInAdaptor::ByteArrayInAdaptor(const std::vector<std::uint8_t>& bytes) : bytes_(bytes) {}

ByteArrayInAdaptor::~ByteArrayInAdaptor() = default;

void ByteArrayInAdaptor::open() {
    if (!open_) {
        position_ = 0;
        open_ = true;
    }
}

std::size_t ByteArrayInAdaptor::read(std::uint8_t* buffer, std::size_t count) {
    // Done also where the caller has shortened the vector below the position.
    if (isDone()) {
        return 0;
    }
    const std::size_t taken = std::min(count, bytes_.size() - position_);
    std::copy_n(bytes_.data() + position_, taken, buffer);
    position_ += taken;
    return taken;
}

bool ByteArrayInAdaptor::isDone() const { return !open_ || position_ >= bytes_.size(); }

void ByteArrayInAdaptor::close() { open_ = false; }

}  // namespace opc
