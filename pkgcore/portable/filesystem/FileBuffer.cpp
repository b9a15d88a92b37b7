#include <pkgcore/platform/filesystem/FileStreams.hpp>

#include <pkgcore/portable/filesystem/FileOpening.hpp>
#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <system_error>

namespace fl::filesystem {

namespace {

using posix::FileDescriptor;
using posix::readSome;
using posix::retryInterrupted;
using posix::systemCalls;
using std::streamsize;

/// Kept before the read-ahead, so that a pipe can be stepped back over the border of two fillings.
constexpr std::size_t kPutBackRoom = 64;
constexpr std::size_t kBufferSize = std::size_t{64} * 1024 + kPutBackRoom;

/// Measured: where transfers follow each other, those of 16 KiB still gain by the buffer.
constexpr streamsize kDirectSize = streamsize{32} * 1024;
/// The same for a read that may remain the only one at its place.
constexpr streamsize kFirstDirectRead = 4096;
/// What is read ahead there.
constexpr std::size_t kFirstFilling = std::size_t{8} * 1024;

const std::streambuf::pos_type kNoPosition = std::streambuf::pos_type(std::streambuf::off_type(-1));

ssize_t writeSome(int descriptor, const char* bytes, streamsize count) noexcept {
    return retryInterrupted(
        [&] { return systemCalls().write(descriptor, bytes, static_cast<std::size_t>(count)); });
}

[[noreturn]] void throwReadFailure(int error) {
    throw std::ios_base::failure("The file cannot be read", std::error_code(error, std::generic_category()));
}

int whenceOf(std::ios_base::seekdir direction) {
    return direction == std::ios_base::beg ? SEEK_SET : direction == std::ios_base::cur ? SEEK_CUR : SEEK_END;
}

/// The end for `ate`, which fails where there is none, and for a file that is only appended to, so that the
/// position can be asked for before the first write.
bool takeFirstPosition(int descriptor, std::ios_base::openmode mode) {
    const bool atEnd = (mode & std::ios_base::ate) != 0;
    const bool onlyAppends = (mode & (std::ios_base::app | std::ios_base::in)) == std::ios_base::app;
    return !(atEnd || onlyAppends) || systemCalls().lseek(descriptor, 0, SEEK_END) >= 0 || !atEnd;
}

}  // namespace

file_buffer::file_buffer() = default;

file_buffer::~file_buffer() { close(); }

bool file_buffer::open(const std::wstring& accessPath, std::ios_base::openmode mode, share_mode /*share*/) {
    if (isOpen()) {
        return false;
    }
    FileDescriptor file = posix::openFile(accessPath, mode);
    if (!file.isOpen() || !takeFirstPosition(file.get(), mode)) {
        return false;
    }
    mode_ = mode;
    readsOn_ = false;
    handle_ = file.release();
    return true;
}

bool file_buffer::close() noexcept {
    if (!isOpen()) {
        return false;
    }
    const bool flushed = flushPending();
    FileDescriptor file(descriptor());
    handle_ = kClosedHandle;
    mode_ = {};
    setg(nullptr, nullptr, nullptr);
    setp(nullptr, nullptr);
    buffer_.reset();
    area_ = nullptr;
    return file.close() == 0 && flushed;
}

// Memory that is short must not cost data that a stream still holds or could still read.
void file_buffer::makeArea() noexcept {
    if (area_ == nullptr) {
        buffer_.reset(new (std::nothrow) char[kBufferSize]);
        area_ = buffer_ ? buffer_.get() : spare_;
        areaSize_ = buffer_ ? kBufferSize : kSpareSize;
    }
}

bool file_buffer::readsDirectly(streamsize count) const noexcept {
    return count >= (readsOn_ ? kDirectSize : kFirstDirectRead);
}

/// What was written goes to the file first. That this fails must not look like the end of the file.
bool file_buffer::startReading() {
    if ((mode_ & std::ios_base::in) == 0) {
        return false;
    }
    if (!flushPending()) {
        throwReadFailure(errno);
    }
    return true;
}

std::size_t file_buffer::refill() {
    makeArea();
    const auto kept = std::min(static_cast<std::size_t>(gptr() - eback()), kPutBackRoom);
    char* const start = area_ + kPutBackRoom;
    if (kept > 0) {
        std::memmove(start - kept, gptr() - kept, kept);
    }
    const std::size_t room = areaSize_ - kPutBackRoom;
    const ssize_t count = readSome(descriptor(), start, readsOn_ ? room : std::min(room, kFirstFilling));
    const int error = errno;
    readsOn_ = true;
    setg(start - kept, start, start + std::max<ssize_t>(count, 0));
    if (count < 0) {
        throwReadFailure(error);
    }
    return static_cast<std::size_t>(count);
}

streamsize file_buffer::takeBuffered(char* out, streamsize count) noexcept {
    const streamsize taken = std::min(count, unread());
    if (taken > 0) {
        std::memcpy(out, gptr(), static_cast<std::size_t>(taken));
        gbump(static_cast<int>(taken));
    }
    return taken;
}

streamsize file_buffer::readDirectly(char* out, streamsize count) {
    const ssize_t taken = readSome(descriptor(), out, static_cast<std::size_t>(count));
    if (taken < 0) {
        throwReadFailure(errno);
    }
    if (taken > 0) {
        setg(nullptr, nullptr, nullptr);
        readsOn_ = true;
    }
    return taken;
}

streamsize file_buffer::xsgetn(char* out, streamsize count) {
    if (count <= 0) {
        return 0;
    }
    streamsize done = takeBuffered(out, count);
    while (done < count && startReading()) {
        const streamsize left = count - done;
        const streamsize taken = readsDirectly(left) ? readDirectly(out + done, left)
                                 : refill() > 0      ? takeBuffered(out + done, left)
                                                     : 0;
        if (taken == 0) {
            break;
        }
        done += taken;
    }
    return done;
}

file_buffer::int_type file_buffer::underflow() {
    if (gptr() == egptr() && (!startReading() || refill() == 0)) {
        return traits_type::eof();
    }
    return traits_type::to_int_type(*gptr());
}

bool file_buffer::stepBack() {
    return (mode_ & std::ios_base::in) != 0 &&
           seekoff(-1, std::ios_base::cur, std::ios_base::in) != kNoPosition && refill() > 0;
}

file_buffer::int_type file_buffer::pbackfail(int_type unit) {
    if (gptr() > eback()) {
        gbump(-1);
    } else if (!stepBack()) {
        return traits_type::eof();
    }
    if (!traits_type::eq_int_type(unit, traits_type::eof())) {
        *gptr() = traits_type::to_char_type(unit);
    }
    return traits_type::not_eof(unit);
}

streamsize file_buffer::showmanyc() {
    if ((mode_ & std::ios_base::in) == 0) {
        return -1;
    }
    struct stat status;
    const bool hasSize = systemCalls().fstat(descriptor(), &status) == 0 && S_ISREG(status.st_mode);
    return hasSize ? std::max<streamsize>(status.st_size - position(), 0) : 0;
}

bool file_buffer::startWriting() noexcept {
    return (mode_ & (std::ios_base::out | std::ios_base::app)) != 0 && dropReadAhead();
}

/// Room for at least one byte in the area for writing.
bool file_buffer::makeRoom() noexcept {
    if (pptr() < epptr()) {
        return true;
    }
    if (!flushPending()) {
        return false;
    }
    makeArea();
    setp(area_ + kPutBackRoom, area_ + areaSize_);
    return true;
}

streamsize file_buffer::putIntoArea(const char* in, streamsize count) noexcept {
    const streamsize taken = std::min<streamsize>(count, epptr() - pptr());
    std::memcpy(pptr(), in, static_cast<std::size_t>(taken));
    pbump(static_cast<int>(taken));
    return taken;
}

streamsize file_buffer::writeDirectly(const char* in, streamsize count) noexcept {
    streamsize done = 0;
    while (done < count) {
        const ssize_t written = writeSome(descriptor(), in + done, count - done);
        if (written <= 0) {
            break;
        }
        done += written;
    }
    return done;
}

streamsize file_buffer::xsputn(const char* in, streamsize count) {
    if (count <= 0 || !startWriting()) {
        return 0;
    }
    streamsize done = 0;
    while (done < count) {
        if (pending() == 0 && count - done >= kDirectSize) {
            return done + writeDirectly(in + done, count - done);
        }
        if (!makeRoom()) {
            break;
        }
        done += putIntoArea(in + done, count - done);
    }
    return done;
}

file_buffer::int_type file_buffer::overflow(int_type unit) {
    if (traits_type::eq_int_type(unit, traits_type::eof())) {
        return flushPending() ? traits_type::not_eof(unit) : unit;
    }
    if (!startWriting() || !makeRoom()) {
        return traits_type::eof();
    }
    *pptr() = traits_type::to_char_type(unit);
    pbump(1);
    return unit;
}

int file_buffer::sync() { return flushPending() ? 0 : -1; }

// What the host has taken leaves the area at once, so that a second attempt after a failure writes only the
// rest.
bool file_buffer::flushPending() noexcept {
    while (pending() > 0) {
        const ssize_t written = writeSome(descriptor(), pbase(), pending());
        if (written <= 0) {
            return false;
        }
        const auto left = static_cast<int>(pending() - written);
        setp(pbase() + written, epptr());
        pbump(left);
    }
    setp(nullptr, nullptr);
    return true;
}

/// Brings the host's position back to that of the stream. Fails, and keeps what was read, where there is a
/// rest that the host cannot go back over.
bool file_buffer::dropReadAhead() noexcept {
    if (unread() > 0 && systemCalls().lseek(descriptor(), -unread(), SEEK_CUR) < 0) {
        return false;
    }
    setg(nullptr, nullptr, nullptr);
    return true;
}

/// Of the stream, or -1.
file_buffer::off_type file_buffer::position() const noexcept {
    const off_type reached = systemCalls().lseek(descriptor(), 0, SEEK_CUR);
    return reached < 0 ? reached : reached - unread() + pending();
}

file_buffer::pos_type file_buffer::seekoff(off_type offset, std::ios_base::seekdir direction,
                                           std::ios_base::openmode /*which*/) {
    if (!isOpen()) {
        return kNoPosition;
    }
    const bool isTell = offset == 0 && direction == std::ios_base::cur;
    const bool moves = pending() > 0 && (mode_ & std::ios_base::app) != 0;  // only writing tells where to
    if (isTell && !moves) {
        return pos_type(position());
    }
    if (direction == std::ios_base::cur && __builtin_sub_overflow(offset, off_type{unread()}, &offset)) {
        return kNoPosition;
    }
    if (!flushPending()) {
        return kNoPosition;
    }
    const off_type reached = systemCalls().lseek(descriptor(), offset, whenceOf(direction));
    if (reached >= 0) {
        setg(nullptr, nullptr, nullptr);
        readsOn_ = false;
    }
    return pos_type(reached);
}

file_buffer::pos_type file_buffer::seekpos(pos_type position, std::ios_base::openmode which) {
    return seekoff(off_type(position), std::ios_base::beg, which);
}

}  // namespace fl::filesystem
