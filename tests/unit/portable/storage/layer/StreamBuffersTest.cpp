// What the buffers of storage's streams do beyond reading and writing in order: put back, tell what is there,
// take the end of a text as a request to flush.

#include <pkgcore/portable/storage/ProviderParts.hpp>
#include <pkgcore/portable/storage/layer/ReadBuffer.hpp>
#include <pkgcore/portable/storage/layer/WriteBuffer.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace foundation::storage::portable {

namespace {

using Traits = std::char_traits<char>;
using provider::BytesReader;
using provider::BytesWriter;

/// Bytes that come in order, of which nobody knows how many there are.
class EndlessReader : public provider::Reader {
public:
    std::size_t read(char* out, std::size_t count) override {
        Traits::assign(out, count, 'x');
        return count;
    }
    std::optional<std::uint64_t> size() const override { return {}; }
};

ReadBuffer reading(std::string bytes) {
    return ReadBuffer(std::make_unique<BytesReader>(std::move(bytes)), true);
}

/// The part of a stream that only other buffers may ask for.
class OpenWriteBuffer : public WriteBuffer {
public:
    using WriteBuffer::overflow;
    using WriteBuffer::WriteBuffer;
};

TEST(ReadBuffer, TellsHowMuchIsLeft) {
    ReadBuffer buffer = reading("0123456789");
    EXPECT_EQ(10, buffer.in_avail());
    EXPECT_EQ('0', buffer.sbumpc());
    EXPECT_EQ(9, buffer.in_avail());
    buffer.pubseekpos(10);
    EXPECT_EQ(-1, buffer.in_avail()) << "sure to be the end";
}

TEST(ReadBuffer, TellsNothingOfAFileWithoutSize) {
    ReadBuffer buffer(std::make_unique<EndlessReader>(), false);
    EXPECT_EQ(0, buffer.in_avail());
    EXPECT_EQ(-1, std::streamoff(buffer.pubseekoff(0, std::ios_base::end)));
    EXPECT_EQ('x', buffer.sgetc()) << "and goes on where it stood";
}

TEST(ReadBuffer, StepsBackBeforeWhatItHolds) {
    ReadBuffer buffer = reading(std::string(100'000, 'a') + 'b');
    buffer.pubseekpos(100'000);
    EXPECT_EQ('b', buffer.sgetc());
    EXPECT_NE(Traits::eof(), buffer.sungetc());
    EXPECT_EQ('a', buffer.sbumpc());
    EXPECT_EQ('b', buffer.sbumpc());
    EXPECT_EQ(Traits::eof(), buffer.sbumpc());
}

TEST(ReadBuffer, PutsAnotherByteBackUntilItIsLeft) {
    ReadBuffer buffer = reading("abc");
    EXPECT_EQ('a', buffer.sbumpc());
    EXPECT_EQ('X', buffer.sputbackc('X'));
    EXPECT_EQ('X', buffer.sbumpc());
    buffer.pubseekpos(0);
    EXPECT_EQ('a', buffer.sbumpc()) << "the file has never held it";
}

TEST(ReadBuffer, HasNothingBeforeTheBeginning) {
    ReadBuffer buffer = reading("abc");
    EXPECT_EQ(Traits::eof(), buffer.sputbackc('x'));
    EXPECT_EQ('a', buffer.sgetc());
}

TEST(ReadBuffer, HasNoPlaceForWriting) {
    ReadBuffer buffer = reading("abc");
    EXPECT_EQ('a', buffer.sbumpc());
    EXPECT_EQ(-1, std::streamoff(buffer.pubseekoff(0, std::ios_base::beg, std::ios_base::out)));
    EXPECT_EQ('b', buffer.sgetc()) << "and goes on where it stood";
}

TEST(WriteBuffer, TakesTheEndOfATextForAFlushOfWhatIsPending) {
    std::string written;
    OpenWriteBuffer buffer(std::make_unique<BytesWriter>(
                               provider::WriteMode::Create,
                               [&written](const std::string& bytes, bool /*isNew*/) { written = bytes; }),
                           0, true);
    buffer.sputc('a');
    EXPECT_NE(Traits::eof(), buffer.overflow(Traits::eof()));
    EXPECT_EQ("", written) << "flushed to the writer, not published";
    EXPECT_EQ(0, buffer.pubsync());
    EXPECT_EQ("a", written);
}

TEST(WriteBuffer, TakesNothingAfterItWasDiscarded) {
    std::string written = "old";
    OpenWriteBuffer buffer(std::make_unique<BytesWriter>(
                               provider::WriteMode::Create,
                               [&written](const std::string& bytes, bool /*isNew*/) { written = bytes; }),
                           0, true);
    buffer.sputc('a');
    buffer.discard();
    EXPECT_EQ(Traits::eof(), buffer.sputc('b'));
    EXPECT_EQ(Traits::eof(), buffer.overflow('c'));
    EXPECT_EQ(0, buffer.sputn("def", 3));
    EXPECT_EQ(0, buffer.sputn(std::string(100'000, 'g').data(), 100'000));
    EXPECT_EQ(-1, buffer.pubsync());
    EXPECT_EQ("old", written);
}

}  // namespace

}  // namespace foundation::storage::portable
