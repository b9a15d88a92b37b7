#pragma once

#include <pkgcore/portable/storage/Provider.hpp>
#include <pkgcore/portable/storage/layer/Publisher.hpp>

#include <memory>
#include <streambuf>

namespace foundation::storage::portable {

/// The bytes of a new content from a standard stream: through a buffer that is made on first need, or past it
/// where a transfer is large. Publishes when it is flushed. After the first failure nothing more is taken or
/// published, so that no content has a gap.
class WriteBuffer : public std::streambuf, public Publisher {
public:
    /// `position` is the end of the content so far, `isNews` whether there is something to publish before the
    /// first byte.
    WriteBuffer(std::unique_ptr<provider::Writer> writer, off_type position, bool isNews);

    /// What was not published is not any more.
    ~WriteBuffer() override;

    bool publish() override;

    void discard() noexcept;

protected:
    std::streamsize xsputn(const char* in, std::streamsize count) override;
    int_type overflow(int_type unit) override;
    int sync() override;
    /// Tells the position, which is always the end, and goes nowhere else.
    pos_type seekoff(off_type offset, std::ios_base::seekdir direction,
                     std::ios_base::openmode which) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode which) override;

private:
    bool makeRoom();
    bool passOn(const char* bytes, std::size_t count);
    bool flushPending();
    bool failed() const noexcept { return writer_ == nullptr; }
    std::streamsize pending() const noexcept { return pptr() - pbase(); }

    std::unique_ptr<provider::Writer> writer_;  ///< null after a failure
    std::unique_ptr<char[]> buffer_;
    off_type written_;  ///< where the buffer begins
    bool isNews_;
};

}  // namespace foundation::storage::portable
