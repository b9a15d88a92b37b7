#include <pkgcore/portable/storage/layer/ReadBuffer.hpp>

#include <pkgcore/portable/storage/layer/Reading.hpp>

#include <algorithm>
#include <cstring>

namespace foundation::storage::portable {

using std::streamsize;

namespace {

constexpr std::size_t kBufferSize = std::size_t{64} * 1024;

/// Measured: where transfers follow each other, smaller ones gain by the buffer.
constexpr streamsize kDirectSize = streamsize{16} * 1024;
/// The same for a read that may remain the only one at its place.
constexpr streamsize kFirstDirectRead = 4096;

const std::streambuf::pos_type kNoPosition = std::streambuf::pos_type(std::streambuf::off_type(-1));

}  // namespace

ReadBuffer::ReadBuffer(std::unique_ptr<provider::Reader> reader, bool canSeek)
    : reader_(std::move(reader)), canSeek_(canSeek) {}

std::size_t ReadBuffer::readSome(char* out, std::size_t count) {
    const std::size_t taken = canSeek_ ? readFrom(*reader_, static_cast<std::uint64_t>(end_), out, count)
                                       : readNext(*reader_, out, count);
    end_ += static_cast<off_type>(taken);
    readsOn_ = true;
    return taken;
}

/// Nothing can be stepped back over that passed the buffer by, unless the reader can.
bool ReadBuffer::readsDirectly(streamsize count) const noexcept {
    return count >= (readsOn_ || !canSeek_ ? kDirectSize : kFirstDirectRead);
}

bool ReadBuffer::refill() {
    if (!buffer_) {
        buffer_.reset(new char[kBufferSize]);
    }
    setg(buffer_.get(), buffer_.get(), buffer_.get());
    const std::size_t taken = readSome(buffer_.get(), kBufferSize);
    setg(buffer_.get(), buffer_.get(), buffer_.get() + taken);
    return taken > 0;
}

ReadBuffer::int_type ReadBuffer::underflow() {
    if (gptr() == egptr() && !refill()) {
        return traits_type::eof();
    }
    return traits_type::to_int_type(*gptr());
}

streamsize ReadBuffer::takeBuffered(char* out, streamsize count) noexcept {
    const streamsize taken = std::min<streamsize>(count, egptr() - gptr());
    if (taken > 0) {
        std::memcpy(out, gptr(), static_cast<std::size_t>(taken));
        gbump(static_cast<int>(taken));
    }
    return taken;
}

streamsize ReadBuffer::xsgetn(char* out, streamsize count) {
    streamsize done = takeBuffered(out, count);
    while (done < count) {
        const streamsize left = count - done;
        streamsize taken = 0;
        if (readsDirectly(left)) {
            setg(nullptr, nullptr, nullptr);
            taken = static_cast<streamsize>(readSome(out + done, static_cast<std::size_t>(left)));
        } else if (refill()) {
            taken = takeBuffered(out + done, left);
        }
        if (taken == 0) {
            break;
        }
        done += taken;
    }
    return done;
}

/// Steps back over what is not in the buffer any more.
ReadBuffer::int_type ReadBuffer::pbackfail(int_type unit) {
    if (gptr() == eback() && !(position() > 0 && moveTo(position() - 1) && refill())) {
        return traits_type::eof();
    }
    if (gptr() > eback()) {
        gbump(-1);
    }
    if (!traits_type::eq_int_type(unit, traits_type::eof())) {
        *gptr() = traits_type::to_char_type(unit);
    }
    return traits_type::not_eof(unit);
}

streamsize ReadBuffer::showmanyc() {
    const std::optional<std::uint64_t> size = reader_->size();
    if (!size) {
        return 0;
    }
    const streamsize left = static_cast<streamsize>(*size) - position();
    return left > 0 ? left : -1;
}

/// Where a seek leads, or -1.
ReadBuffer::off_type ReadBuffer::target(off_type offset, std::ios_base::seekdir direction) const {
    off_type base = 0;
    if (direction == std::ios_base::cur) {
        base = position();
    } else if (direction == std::ios_base::end) {
        const std::optional<std::uint64_t> size = reader_->size();
        if (!size) {
            return -1;
        }
        base = static_cast<off_type>(*size);
    }
    off_type result = 0;
    return __builtin_add_overflow(base, offset, &result) ? -1 : result;
}

/// Within the buffer if it can, so that small steps cost nothing.
bool ReadBuffer::moveTo(off_type position) {
    const off_type start = end_ - (egptr() - eback());
    if (position >= start && position <= end_) {
        setg(eback(), eback() + (position - start), egptr());
        return true;
    }
    if (!canSeek_ || position < 0) {
        return false;
    }
    setg(nullptr, nullptr, nullptr);
    end_ = position;
    readsOn_ = false;
    return true;
}

ReadBuffer::pos_type ReadBuffer::seekoff(off_type offset, std::ios_base::seekdir direction,
                                         std::ios_base::openmode which) {
    if ((which & std::ios_base::in) == 0) {
        return kNoPosition;
    }
    const off_type position = target(offset, direction);
    return moveTo(position) ? pos_type(position) : kNoPosition;
}

ReadBuffer::pos_type ReadBuffer::seekpos(pos_type position, std::ios_base::openmode which) {
    return seekoff(off_type(position), std::ios_base::beg, which);
}

}  // namespace foundation::storage::portable
