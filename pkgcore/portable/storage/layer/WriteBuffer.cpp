#include <pkgcore/portable/storage/layer/WriteBuffer.hpp>

#include <algorithm>
#include <cstring>

namespace foundation::storage::portable {

using std::streamsize;

namespace {

constexpr std::size_t kBufferSize = std::size_t{64} * 1024;
constexpr streamsize kDirectSize = streamsize{32} * 1024;

const std::streambuf::pos_type kNoPosition = std::streambuf::pos_type(std::streambuf::off_type(-1));

}  // namespace

WriteBuffer::WriteBuffer(std::unique_ptr<provider::Writer> writer, off_type position, bool isNews)
    : writer_(std::move(writer)), written_(position), isNews_(isNews) {}

WriteBuffer::~WriteBuffer() { discard(); }

void WriteBuffer::discard() noexcept {
    if (!failed()) {
        writer_->discard();
        writer_.reset();
    }
    setp(nullptr, nullptr);
}

// The streams of the library tell of a failure by their state alone; why it failed has no way out of here.
bool WriteBuffer::passOn(const char* bytes, std::size_t count) {
    if (failed()) {
        return false;
    }
    try {
        writer_->write(bytes, count);
    } catch (...) {
        discard();
        return false;
    }
    written_ += static_cast<off_type>(count);
    isNews_ = true;
    return true;
}

bool WriteBuffer::flushPending() {
    const streamsize count = pending();
    if (count > 0 && !passOn(pbase(), static_cast<std::size_t>(count))) {
        return false;
    }
    setp(pbase(), epptr());
    return !failed();
}

bool WriteBuffer::publish() {
    if (!flushPending()) {
        return false;
    }
    if (!isNews_) {
        return true;
    }
    try {
        writer_->commit();
    } catch (...) {
        discard();
        return false;
    }
    isNews_ = false;
    return true;
}

int WriteBuffer::sync() { return publish() ? 0 : -1; }

/// Room for at least one byte.
bool WriteBuffer::makeRoom() {
    if (pptr() < epptr()) {
        return true;
    }
    if (!flushPending()) {
        return false;
    }
    if (!buffer_) {
        buffer_.reset(new char[kBufferSize]);
    }
    setp(buffer_.get(), buffer_.get() + kBufferSize);
    return true;
}

streamsize WriteBuffer::xsputn(const char* in, streamsize count) {
    streamsize done = 0;
    while (done < count) {
        const streamsize left = count - done;
        if (pending() == 0 && left >= kDirectSize) {
            return passOn(in + done, static_cast<std::size_t>(left)) ? count : done;
        }
        if (!makeRoom()) {
            break;
        }
        const streamsize taken = std::min<streamsize>(left, epptr() - pptr());
        std::memcpy(pptr(), in + done, static_cast<std::size_t>(taken));
        pbump(static_cast<int>(taken));
        done += taken;
    }
    return done;
}

WriteBuffer::int_type WriteBuffer::overflow(int_type unit) {
    if (traits_type::eq_int_type(unit, traits_type::eof())) {
        return flushPending() ? traits_type::not_eof(unit) : unit;
    }
    if (!makeRoom()) {
        return traits_type::eof();
    }
    *pptr() = traits_type::to_char_type(unit);
    pbump(1);
    return unit;
}

WriteBuffer::pos_type WriteBuffer::seekoff(off_type offset, std::ios_base::seekdir direction,
                                           std::ios_base::openmode which) {
    const off_type position = written_ + pending();
    const bool isHere = offset == (direction == std::ios_base::beg ? position : 0);
    if (failed() || (which & std::ios_base::out) == 0 || !isHere) {
        return kNoPosition;
    }
    return pos_type(position);
}

WriteBuffer::pos_type WriteBuffer::seekpos(pos_type position, std::ios_base::openmode which) {
    return seekoff(off_type(position), std::ios_base::beg, which);
}

}  // namespace foundation::storage::portable
