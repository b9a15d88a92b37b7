#pragma once

#include <pkgcore/portable/storage/Provider.hpp>

#include <memory>
#include <streambuf>

namespace foundation::storage::portable {

/// The bytes of an open file for a standard stream: through a buffer that is made on first need, or past it
/// where a transfer is large. What the reader throws passes through, so that the stream above shows badbit
/// and not the end of the file.
///
/// Can seek where the reader can read at an offset; otherwise it only tells its position.
class ReadBuffer : public std::streambuf {
public:
    ReadBuffer(std::unique_ptr<provider::Reader> reader, bool canSeek);

protected:
    std::streamsize showmanyc() override;
    std::streamsize xsgetn(char* out, std::streamsize count) override;
    int_type underflow() override;
    int_type pbackfail(int_type unit) override;
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

private:
    std::size_t readSome(char* out, std::size_t count);
    bool refill();
    bool readsDirectly(std::streamsize count) const noexcept;
    std::streamsize takeBuffered(char* out, std::streamsize count) noexcept;
    off_type position() const noexcept { return end_ - (egptr() - gptr()); }
    off_type target(off_type offset, std::ios_base::seekdir direction) const;
    bool moveTo(off_type position);

    std::unique_ptr<provider::Reader> reader_;
    bool canSeek_;
    std::unique_ptr<char[]> buffer_;
    off_type end_ = 0;        ///< of what was read, in the file
    bool readsOn_ = false;    ///< whether something was read where it stands
    bool isAltered_ = false;  ///< whether the buffer holds what the file does not
};

}  // namespace foundation::storage::portable
