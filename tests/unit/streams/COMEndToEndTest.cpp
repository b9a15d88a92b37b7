// The COM adaptors over real streams: memory, files and pipes.

#include <pkgcore/streams/ByteArrayInAdaptor.hpp>
#include <pkgcore/streams/ByteArrayOutAdaptor.hpp>
#include <pkgcore/streams/COMIStreamInAdaptor.hpp>
#include <pkgcore/streams/COMIStreamOutAdaptor.hpp>
#include <pkgcore/streams/StreamHelper.hpp>

#include "tests/unit/streams/COMStreamKinds.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <sstream>

namespace opc {
namespace {

using test::OpenStream;
using test::StreamReference;

constexpr std::size_t kTenMiB = std::size_t{10} << 20;

std::string readUpTo(InputStream& in, std::size_t count) {
    std::string bytes(count, '#');
    bytes.resize(in.read(reinterpret_cast<std::uint8_t*>(bytes.data()), count));
    return bytes;
}

std::size_t write(OutputStream& out, const std::string& bytes) {
    return out.write(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

bool copy(IStream& from, IStream& to) {
    COMIStreamInAdaptor in(from);
    COMIStreamOutAdaptor out(to);
    const bool copied = StreamHelper::copyStreamToStream(in, out);
    EXPECT_TRUE(in.isDone() || !copied);
    EXPECT_EQ(!copied, out.isDone());
    out.flush();
    return copied;
}

std::uint64_t positionOf(IStream& stream) {
    ULARGE_INTEGER position{};
    stream.Seek(test::moveBy(0), STREAM_SEEK_CUR, &position);
    return position.QuadPart;
}

class COMEndToEnd : public ::testing::TestWithParam<test::StreamKind> {
protected:
    OpenStream open(const std::string& content) const { return GetParam().open(folder, content); }

    test::TempTree folder;
};

TEST(COMEndToEndCopy, GoesFromMemoryToAFileAndBackByteForByte) {
    const std::string content = test::someBytes(kTenMiB);
    const test::TempTree folder;
    const OpenStream from = openMemoryStream(content, test::MemoryStore::Mode::direct);
    const OpenStream file = test::kFile.open(folder, "");
    const OpenStream to = openMemoryStream("", test::MemoryStore::Mode::transacted);
    EXPECT_TRUE(copy(*from, *file));
    EXPECT_TRUE(file.stored() == content);
    EXPECT_EQ(kTenMiB, positionOf(*file));
    EXPECT_EQ(S_OK, file->Seek(test::moveBy(0), STREAM_SEEK_SET, nullptr));
    EXPECT_TRUE(copy(*file, *to));
    EXPECT_TRUE(to.stored() == content);
}

TEST_P(COMEndToEnd, ACopyOfAnySizeArrivesWhole) {
    for (const std::size_t size : {0U, 1U, 16383U, 16384U, 16385U, 32768U, 40000U}) {
        const std::string content = test::someBytes(size);
        const OpenStream from = open(content);
        const OpenStream to = openMemoryStream("", test::MemoryStore::Mode::transacted);
        EXPECT_TRUE(copy(*from, *to)) << size;
        EXPECT_TRUE(to.stored() == content) << size;
    }
}

TEST_P(COMEndToEnd, AdaptorsBeginWhereTheStreamStands) {
    const OpenStream stream = open("abcdef");
    ASSERT_EQ(S_OK, stream->Seek(test::moveBy(2), STREAM_SEEK_SET, nullptr));
    {
        COMIStreamInAdaptor in(*stream);
        EXPECT_EQ("cd", readUpTo(in, 2));
        COMIStreamOutAdaptor out(*stream);
        EXPECT_EQ(1U, write(out, "X"));
        out.flush();
    }
    EXPECT_EQ(5U, positionOf(*stream));
    EXPECT_EQ("abcdXf", stream.stored());
}

TEST_P(COMEndToEnd, AnInputIsDoneOnceAReadCameShort) {
    const OpenStream stream = open("abcdef");
    COMIStreamInAdaptor in(*stream);
    EXPECT_EQ("abcd", readUpTo(in, 4));
    EXPECT_FALSE(in.isDone());
    EXPECT_EQ("ef", readUpTo(in, 4));
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ("", readUpTo(in, 4));
    EXPECT_TRUE(in.isDone());
}

TEST_P(COMEndToEnd, AnInputGoesOnWhereTheStreamGrew) {
    const OpenStream stream = open("ab");
    COMIStreamInAdaptor in(*stream);
    EXPECT_EQ("ab", readUpTo(in, 4));
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ(S_OK, stream->Write("cd", 2, nullptr));
    EXPECT_EQ(S_OK, stream->Seek(test::moveBy(2), STREAM_SEEK_SET, nullptr));
    EXPECT_EQ("cd", readUpTo(in, 2));
    EXPECT_FALSE(in.isDone());
}

TEST_P(COMEndToEnd, ClosingAndOpeningRewinds) {
    const OpenStream stream = open("abcdef");
    COMIStreamInAdaptor in(*stream);
    EXPECT_EQ("abc", readUpTo(in, 3));
    in.open();
    EXPECT_EQ("d", readUpTo(in, 1)) << "an open one keeps its place";
    in.close();
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ("", readUpTo(in, 3));
    EXPECT_EQ(4U, positionOf(*stream)) << "closing does not touch the stream";
    in.open();
    EXPECT_FALSE(in.isDone());
    EXPECT_EQ("abcdef", readUpTo(in, 9));
}

TEST_P(COMEndToEnd, NeitherAdaptorHoldsOnToTheStream) {
    const OpenStream stream = open("abc");
    {
        COMIStreamInAdaptor in(*stream);
        COMIStreamOutAdaptor out(*stream);
        EXPECT_EQ(2U, stream->AddRef());
        EXPECT_EQ(1U, stream->Release());
        out.close();
    }
    EXPECT_EQ(2U, stream->AddRef());
    EXPECT_EQ(1U, stream->Release());
}

TEST_P(COMEndToEnd, BetweenByteArraysAndStandardStreams) {
    const OpenStream stream = open("");
    const std::string content = test::someBytes(40000);
    std::istringstream source(content);
    COMIStreamOutAdaptor out(*stream);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(source, out));
    COMIStreamInAdaptor in(*stream);
    in.close();
    in.open();
    std::vector<std::uint8_t> bytes;
    ByteArrayOutAdaptor array(bytes);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(in, array));
    EXPECT_TRUE(std::string(bytes.begin(), bytes.end()) == content);
}

INSTANTIATE_TEST_SUITE_P(Every, COMEndToEnd,
                         ::testing::Values(test::kMemory, test::kTransactedMemory, test::kFile),
                         [](const auto& one) { return one.param.name; });

TEST(COMEndToEndOutput, ReachesATransactedStreamWithTheFlush) {
    const OpenStream stream = openMemoryStream("old", test::MemoryStore::Mode::transacted);
    {
        COMIStreamOutAdaptor out(*stream);
        EXPECT_EQ(3U, write(out, "new"));
        out.close();
        EXPECT_EQ("old", stream.stored());
        out.flush();
        EXPECT_EQ("new", stream.stored());
        EXPECT_EQ(4U, write(out, "more"));
    }
    EXPECT_EQ("new", stream.stored()) << "the end of the adaptor commits nothing";
}

TEST(COMEndToEndOutput, ThatIsFullMakesTheCopyFail) {
    const auto block = std::make_shared<test::Bytes>();
    const StreamReference small = test::StoreStream::make(
        std::make_shared<test::MemoryStore>(block, test::MemoryStore::Mode::direct, 20'000));
    const OpenStream from = openMemoryStream(test::someBytes(40'000), test::MemoryStore::Mode::direct);
    EXPECT_FALSE(copy(*from, *small));
    EXPECT_EQ(20'000U, block->size());
    const StreamReference full = test::openDescriptorStream(::open("/dev/full", O_RDWR | O_CLOEXEC));
    EXPECT_FALSE(copy(*from, *full));
}

TEST(COMEndToEndOutput, ThatIsReadOnlyMakesTheCopyFail) {
    const test::TempTree folder;
    test::makeFile(folder / "file", "kept");
    const OpenStream from = openMemoryStream("abc", test::MemoryStore::Mode::direct);
    const OpenStream to = test::openFileStream(folder / "file", O_RDONLY);
    EXPECT_FALSE(copy(*from, *to));
    EXPECT_EQ("kept", to.stored());
}

TEST(COMEndToEndInput, ThatCannotBeReadIsAnEmptyOne) {
    const test::TempTree folder;
    test::makeFile(folder / "file", "abc");
    const OpenStream from = test::openFileStream(folder / "file", O_WRONLY);
    const OpenStream to = openMemoryStream("", test::MemoryStore::Mode::direct);
    EXPECT_TRUE(copy(*from, *to)) << "the loop sees an input that is done";
    EXPECT_EQ("", to.stored());
}

TEST(COMEndToEndInput, IsNotDoneWhileItsBytesArePending) {
    int ends[2];
    ASSERT_EQ(0, ::pipe2(ends, O_NONBLOCK | O_CLOEXEC));
    const StreamReference from = test::openDescriptorStream(ends[0]);
    StreamReference to = test::openDescriptorStream(ends[1]);
    COMIStreamInAdaptor in(*from);
    EXPECT_EQ("", readUpTo(in, 4));
    EXPECT_FALSE(in.isDone());
    COMIStreamOutAdaptor out(*to);
    EXPECT_EQ(2U, write(out, "ab"));
    EXPECT_EQ("ab", readUpTo(in, 4));
    EXPECT_FALSE(in.isDone());
    to.reset();
    EXPECT_EQ("", readUpTo(in, 4));
    EXPECT_TRUE(in.isDone());
}

TEST(COMEndToEndInput, StaysClosedWhereTheStreamCannotGoBack) {
    int ends[2];
    ASSERT_EQ(0, ::pipe2(ends, O_NONBLOCK | O_CLOEXEC));
    const StreamReference from = test::openDescriptorStream(ends[0]);
    const StreamReference to = test::openDescriptorStream(ends[1]);
    EXPECT_EQ(S_OK, to->Write("ab", 2, nullptr));
    COMIStreamInAdaptor in(*from);
    EXPECT_EQ("a", readUpTo(in, 1));
    in.close();
    in.open();
    EXPECT_TRUE(in.isDone());
    EXPECT_EQ("", readUpTo(in, 1));
}

TEST(COMEndToEndOutput, TakesWhatFitsWhileTheRestIsPending) {
    int ends[2];
    ASSERT_EQ(0, ::pipe2(ends, O_NONBLOCK | O_CLOEXEC));
    const StreamReference from = test::openDescriptorStream(ends[0]);
    const StreamReference to = test::openDescriptorStream(ends[1]);
    COMIStreamOutAdaptor out(*to);
    const std::size_t taken = write(out, std::string(std::size_t{1} << 20, 'x'));
    EXPECT_GT(taken, 0U);
    EXPECT_LT(taken, std::size_t{1} << 20);
    EXPECT_FALSE(out.isDone());
}

}  // namespace
}  // namespace opc
