#include <pkgcore/streams/InputStreamSource.hpp>
#include <pkgcore/streams/OutputStreamSink.hpp>

#include <pkgcore/streams/ByteArrayInAdaptor.hpp>
#include <pkgcore/streams/ByteArrayOutAdaptor.hpp>

#include <gtest/gtest.h>
#include <boost/iostreams/copy.hpp>
#include <boost/iostreams/device/back_inserter.hpp>
#include <boost/iostreams/filter/counter.hpp>
#include <boost/iostreams/filter/gzip.hpp>
#include <boost/iostreams/filtering_stream.hpp>
#include <boost/iostreams/stream.hpp>
#include <boost/iostreams/stream_buffer.hpp>

#include "tests/unit/streams/ScriptedStreams.hpp"

#include <iterator>

namespace opc {
namespace {

namespace io = boost::iostreams;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kTenMiB = std::size_t{10} << 20;

/// Bytes that compress a little.
const Bytes& tenMiB() {
    static const Bytes bytes = [] {
        Bytes made(kTenMiB);
        std::uint32_t value = 7;
        for (std::uint8_t& byte : made) {
            value = value * 1664525 + 1013904223;
            byte = static_cast<std::uint8_t>(value >> 28);
        }
        return made;
    }();
    return bytes;
}

/// A byte array that counts its flushes.
class FlushedBytes : public ByteArrayOutAdaptor {
public:
    using ByteArrayOutAdaptor::ByteArrayOutAdaptor;
    void flush() override { ++flushes; }
    int flushes = 0;
};

Bytes readAll(std::istream& stream) {
    return Bytes(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

void writeAll(std::ostream& stream, const Bytes& bytes) {
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

TEST(Source, EndsWithMinusOneWithoutReadingOnceTheStreamIsDone) {
    std::vector<std::string> log;
    ScriptedInput in({{1, true, false}}, log);
    InputStreamSource source(in);
    char byte = 0;
    EXPECT_EQ(source.read(&byte, 1), 1);
    log.clear();
    EXPECT_EQ(source.read(&byte, 1), -1);
    EXPECT_EQ(log, std::vector<std::string>{"in.isDone"});
}

TEST(Source, GivesZeroForNothingYet) {
    std::vector<std::string> log;
    ScriptedInput in({{0, false, false}}, log);
    char byte = 0;
    EXPECT_EQ(InputStreamSource(in).read(&byte, 1), 0);
}

TEST(Sink, WritesWithoutAskingWhetherTheStreamIsDone) {
    std::vector<std::string> log;
    ScriptedOutput out({{2, true, false}, {1, true, false}}, log);
    OutputStreamSink sink(out);
    EXPECT_EQ(sink.write("abc", 3), 2);
    EXPECT_EQ(sink.write("c", 1), 1);
    EXPECT_EQ(log, (std::vector<std::string>{"out.write 3", "out.write 1"}));
}

TEST(Sink, FlushReachesTheStreamAndIsAlwaysTrue) {
    std::vector<std::string> log;
    ScriptedOutput out({}, log);
    EXPECT_TRUE(OutputStreamSink(out).flush());
    EXPECT_EQ(log, std::vector<std::string>{"out.flush"});
}

TEST(Source, FeedsAStreamBuffer) {
    ByteArrayInAdaptor in(tenMiB());
    io::stream_buffer<InputStreamSource> buffer{InputStreamSource(in)};
    std::istream stream(&buffer);
    EXPECT_TRUE(readAll(stream) == tenMiB());
}

TEST(Source, FeedsAStream) {
    ByteArrayInAdaptor in(tenMiB());
    io::stream<InputStreamSource> stream{InputStreamSource(in)};
    EXPECT_TRUE(readAll(stream) == tenMiB());
}

TEST(Sink, TakesFromAStreamBufferAndItsFlush) {
    Bytes target;
    FlushedBytes out(target);
    io::stream_buffer<OutputStreamSink> buffer{OutputStreamSink(out)};
    std::ostream stream(&buffer);
    writeAll(stream, tenMiB());
    stream.flush();
    EXPECT_TRUE(target == tenMiB());
    EXPECT_EQ(out.flushes, 1);
}

TEST(Sink, TakesFromAStreamAndItsFlush) {
    Bytes target;
    FlushedBytes out(target);
    io::stream<OutputStreamSink> stream{OutputStreamSink(out)};
    writeAll(stream, tenMiB());
    stream << std::flush;
    EXPECT_TRUE(target == tenMiB());
    EXPECT_EQ(out.flushes, 1);
}

TEST(Sink, PassesTheFlushOfAStreamDown) {
    std::vector<std::string> log;
    ScriptedOutput out({}, log);
    io::stream<OutputStreamSink> stream{OutputStreamSink(out)};
    stream << "abc" << std::flush;
    EXPECT_EQ(log, (std::vector<std::string>{"out.write 3", "out.flush"}));
}

TEST(Devices, CopyFromOneToTheOther) {
    ByteArrayInAdaptor in(tenMiB());
    Bytes target;
    ByteArrayOutAdaptor out(target);
    EXPECT_EQ(io::copy(InputStreamSource(in), OutputStreamSink(out)), static_cast<std::streamsize>(kTenMiB));
    EXPECT_TRUE(target == tenMiB());
}

Bytes compressed() {
    Bytes target;
    FlushedBytes out(target);
    io::filtering_ostream stream;
    stream.push(io::gzip_compressor());
    stream.push(OutputStreamSink(out));
    writeAll(stream, tenMiB());
    stream.flush();
    EXPECT_GE(out.flushes, 1);
    stream.reset();
    return target;
}

TEST(Devices, ServeAGzipFilterInBothDirections) {
    const Bytes packed = compressed();
    EXPECT_LT(packed.size(), kTenMiB);
    ByteArrayInAdaptor in(packed);
    io::filtering_istream stream;
    stream.push(io::gzip_decompressor());
    stream.push(InputStreamSource(in));
    EXPECT_TRUE(readAll(stream) == tenMiB());
}

TEST(Devices, ServeACountingFilterInBothDirections) {
    ByteArrayInAdaptor in(tenMiB());
    io::filtering_istream input;
    input.push(io::counter());
    input.push(InputStreamSource(in));
    Bytes target;
    FlushedBytes out(target);
    io::filtering_ostream output;
    output.push(io::counter());
    output.push(OutputStreamSink(out));
    output << input.rdbuf() << std::flush;
    EXPECT_GE(out.flushes, 1);
    EXPECT_EQ(input.component<io::counter>(0)->characters(), static_cast<int>(kTenMiB));
    EXPECT_EQ(output.component<io::counter>(0)->characters(), static_cast<int>(kTenMiB));
    EXPECT_TRUE(target == tenMiB());
}

}  // namespace
}  // namespace opc
