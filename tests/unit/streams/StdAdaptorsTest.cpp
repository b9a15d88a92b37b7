#include <pkgcore/streams/StdIStreamAdaptor.hpp>
#include <pkgcore/streams/StdOStreamAdaptor.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

namespace opc {
namespace {

std::string readUpTo(InputStream& stream, std::size_t count) {
    std::string text(count, '#');
    text.resize(stream.read(reinterpret_cast<std::uint8_t*>(text.data()), count));
    return text;
}

std::size_t write(OutputStream& stream, const std::string& text) {
    return stream.write(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

/// Takes bytes, and fails from the `limit`th on.
class LimitedBuffer : public std::stringbuf {
public:
    explicit LimitedBuffer(std::streamsize limit) : left_(limit) {}

protected:
    std::streamsize xsputn(const char* in, std::streamsize count) override {
        const std::streamsize taken = std::min(count, left_);
        left_ -= taken;
        return std::stringbuf::xsputn(in, taken);
    }

private:
    std::streamsize left_;
};

/// Takes everything and cannot tell where it stands, as a pipe.
class PositionlessBuffer : public std::streambuf {
public:
    std::string taken;

protected:
    std::streamsize xsputn(const char* in, std::streamsize count) override {
        taken.append(in, static_cast<std::size_t>(count));
        return count;
    }
};

TEST(StdIStream, BeginsWhereTheStreamStands) {
    std::istringstream stream("abcdef");
    stream.ignore(2);
    StdIStreamAdaptor in(stream);
    EXPECT_EQ(readUpTo(in, 3), "cde");
    EXPECT_FALSE(in.isDone());
}

TEST(StdIStream, ReportsTheBytesOfAShortReadAndIsDone) {
    std::istringstream stream("abc");
    StdIStreamAdaptor in(stream);
    EXPECT_EQ(readUpTo(in, 5), "abc");
    EXPECT_TRUE(stream.eof() && stream.fail());
    EXPECT_TRUE(in.isDone());
}

TEST(StdIStream, IsNotDoneAfterReadingExactlyAll) {
    std::istringstream stream("abc");
    StdIStreamAdaptor in(stream);
    EXPECT_EQ(readUpTo(in, 3), "abc");
    EXPECT_FALSE(in.isDone());
    EXPECT_EQ(readUpTo(in, 3), "");
    EXPECT_TRUE(in.isDone());
}

TEST(StdIStream, AtTheEndReadsNothingAndIsDone) {
    std::istringstream stream("");
    StdIStreamAdaptor in(stream);
    EXPECT_FALSE(in.isDone());
    EXPECT_EQ(readUpTo(in, 1), "");
    EXPECT_TRUE(in.isDone());
}

TEST(StdIStream, IsDoneForEachStateBit) {
    for (const auto bit : {std::ios::eofbit, std::ios::failbit, std::ios::badbit}) {
        std::istringstream stream("abc");
        stream.setstate(bit);
        StdIStreamAdaptor in(stream);
        EXPECT_TRUE(in.isDone()) << bit;
    }
}

TEST(StdIStream, ClosingLeavesTheStreamAlone) {
    std::istringstream stream("abc");
    StdIStreamAdaptor in(stream);
    in.close();
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ(readUpTo(in, 3), "");
    EXPECT_TRUE(stream.good());
    EXPECT_EQ(stream.tellg(), 0);
}

TEST(StdIStream, ReopeningClearsTheStateAndRewinds) {
    std::istringstream stream("abc");
    StdIStreamAdaptor in(stream);
    readUpTo(in, 9);
    in.close();
    in.open();
    EXPECT_FALSE(in.isDone());
    EXPECT_EQ(readUpTo(in, 9), "abc");
}

TEST(StdIStream, ReopeningOneThatCannotGoBackIsDone) {
    struct OneWayBuffer : std::stringbuf {
        OneWayBuffer() : std::stringbuf("abc") {}
        pos_type seekoff(off_type, std::ios::seekdir, std::ios::openmode) override { return off_type(-1); }
        pos_type seekpos(pos_type, std::ios::openmode) override { return off_type(-1); }
    } buffer;
    std::istream stream(&buffer);
    StdIStreamAdaptor in(stream);
    EXPECT_EQ(readUpTo(in, 1), "a");
    in.close();
    in.open();
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ(readUpTo(in, 1), "");
}

TEST(StdIStream, OpeningAnOpenOneNeitherClearsNorRewinds) {
    std::istringstream stream("abc");
    StdIStreamAdaptor in(stream);
    readUpTo(in, 9);
    in.open();
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ(readUpTo(in, 9), "");
}

TEST(StdOStream, CountsByTheMoveOfThePutPosition) {
    std::ostringstream stream;
    stream << "12";
    StdOStreamAdaptor out(stream);
    EXPECT_EQ(write(out, "abc"), 3U);
    EXPECT_EQ(write(out, ""), 0U);
    EXPECT_EQ(stream.str(), "12abc");
    EXPECT_FALSE(out.isDone());
}

/// Makes two bytes of each line feed, as hosts do that end lines in two.
class TranslatingBuffer : public std::stringbuf {
protected:
    std::streamsize xsputn(const char* in, std::streamsize count) override {
        for (std::streamsize i = 0; i < count; ++i) {
            std::stringbuf::xsputn(in[i] == '\n' ? "\r\n" : in + i, in[i] == '\n' ? 2 : 1);
        }
        return count;
    }
};

TEST(StdOStream, CountsTheMoveAlsoWhereThatIsNotTheCountOfBytes) {
    TranslatingBuffer buffer;
    std::ostream stream(&buffer);
    StdOStreamAdaptor out(stream);
    EXPECT_EQ(write(out, "a\nb"), 4U);
    EXPECT_EQ(buffer.str(), "a\r\nb");
}

TEST(StdOStream, IsDoneForEachStateBit) {
    for (const auto bit : {std::ios::eofbit, std::ios::failbit, std::ios::badbit}) {
        std::ostringstream stream;
        stream.setstate(bit);
        StdOStreamAdaptor out(stream);
        EXPECT_TRUE(out.isDone()) << bit;
    }
}

TEST(StdOStream, CountsNothingWhereThePositionCannotBeTold) {
    PositionlessBuffer buffer;
    std::ostream stream(&buffer);
    StdOStreamAdaptor out(stream);
    EXPECT_EQ(write(out, "abc"), 0U);
    EXPECT_EQ(buffer.taken, "abc");
    EXPECT_FALSE(out.isDone());
}

TEST(StdOStream, WritesNothingToAFailedStreamAndIsDone) {
    std::ostringstream stream;
    stream.setstate(std::ios::failbit);
    StdOStreamAdaptor out(stream);
    EXPECT_EQ(write(out, "abc"), 0U);
    EXPECT_TRUE(out.isDone());
    EXPECT_EQ(stream.str(), "");
}

TEST(StdOStream, NeverTakesAWriteThatFailsForAHugeCount) {
    LimitedBuffer buffer(4);
    std::ostream stream(&buffer);
    StdOStreamAdaptor out(stream);
    EXPECT_EQ(write(out, "abc"), 3U);
    EXPECT_EQ(write(out, "defg"), 0U);
    EXPECT_TRUE(out.isDone());
}

TEST(StdOStream, FlushReachesTheBufferAndCloseDoesNothing) {
    struct CountingBuffer : std::stringbuf {
        int syncs = 0;
        int sync() override { return ++syncs, 0; }
    } buffer;
    std::ostream stream(&buffer);
    StdOStreamAdaptor out(stream);
    out.close();
    EXPECT_EQ(buffer.syncs, 0);
    out.flush();
    EXPECT_EQ(buffer.syncs, 1);
    EXPECT_EQ(write(out, "x"), 1U);
}

}  // namespace
}  // namespace opc
