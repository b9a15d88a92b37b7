#include <pkgcore/platform/filesystem/FileStreams.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string>

namespace {

using fl::filesystem::share_mode;
using fl::filesystem::posix::kHostCalls;
using std::ios_base;
using InputStream = fl::filesystem::basic_ifstream<char>;
using OutputStream = fl::filesystem::basic_ofstream<char>;

template <typename Stream>
std::unique_ptr<Stream> opened(const std::string& path, ios_base::openmode mode = {}) {
    auto stream = std::make_unique<Stream>();
    stream->open(std::wstring(path.begin(), path.end()), mode, share_mode::deny_none);
    return stream;
}

void writeInChunks(std::ostream& out, const std::string& bytes, std::size_t chunk) {
    for (std::size_t at = 0; at < bytes.size(); at += chunk) {
        out.write(bytes.data() + at, static_cast<std::streamsize>(std::min(chunk, bytes.size() - at)));
    }
}

std::string readInChunks(std::istream& in, std::size_t chunk) {
    std::string bytes;
    std::string piece(chunk, '\0');
    do {
        in.read(piece.data(), static_cast<std::streamsize>(chunk));
        bytes.append(piece, 0, static_cast<std::size_t>(in.gcount()));
    } while (in);
    return bytes;
}

class RoundTrip : public testing::TestWithParam<std::tuple<std::size_t, std::size_t, std::size_t>> {};

TEST_P(RoundTrip, GivesBackEachByte) {
    const auto [size, writeChunk, readChunk] = GetParam();
    const test::TempTree tree;
    const std::string content = test::someBytes(size);
    const auto out = opened<OutputStream>(tree / "file");
    writeInChunks(*out, content, writeChunk);
    out->close();
    ASSERT_TRUE(out->good());

    const auto in = opened<InputStream>(tree / "file");
    EXPECT_TRUE(readInChunks(*in, readChunk) == content);
    EXPECT_TRUE(in->eof());
    EXPECT_FALSE(in->bad());
    EXPECT_EQ(test::statusOf(tree / "file").st_size, static_cast<off_t>(size));
}

constexpr std::size_t kKibi = 1024;
INSTANTIATE_TEST_SUITE_P(Sizes, RoundTrip,
                         testing::Combine(testing::Values(0, 1, 64 * kKibi - 1, 64 * kKibi, 64 * kKibi + 1,
                                                          1024 * kKibi),
                                          testing::Values(1, 1000, 16 * kKibi, 200 * kKibi),
                                          testing::Values(1, 4095, 16 * kKibi, 2048 * kKibi)));

TEST(FileStreams, ShowTheBufferThatTheyReadAndWriteWith) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "text");
    const auto in = opened<InputStream>(tree / "file");
    EXPECT_EQ(static_cast<std::ios&>(*in).rdbuf(), in->rdbuf());
    EXPECT_EQ('t', in->rdbuf()->sgetc());
    const auto out = opened<OutputStream>(tree / "file");
    EXPECT_EQ(static_cast<std::ios&>(*out).rdbuf(), out->rdbuf());
}

TEST(FileStreams, TextIsWrittenAsItIs) {
    const test::TempTree tree;
    const auto out = opened<OutputStream>(tree / "file");
    *out << "line\r\n" << 42 << '\n' << '\0' << "\xFF\x1A";
    out->close();

    EXPECT_EQ(test::contentOf(tree / "file"), std::string("line\r\n42\n\0\xFF\x1A", 12));
}

TEST(FileStreams, PositionsBeyondFourGibibytesWork) {
    const test::TempTree tree;
    constexpr std::streamoff far = std::streamoff{5} << 30;
    const auto out = opened<OutputStream>(tree / "file");
    out->seekp(far);
    *out << "island";
    EXPECT_EQ(std::streamoff(out->tellp()), far + 6);
    out->close();
    ASSERT_TRUE(out->good());
    EXPECT_EQ(test::statusOf(tree / "file").st_size, far + 6);

    const auto in = opened<InputStream>(tree / "file");
    in->seekg(-6, ios_base::end);
    EXPECT_EQ(std::streamoff(in->tellg()), far);
    EXPECT_EQ(readInChunks(*in, 4), "island");
    in->clear();
    EXPECT_EQ(std::streamoff(in->tellg()), far + 6);
}

TEST(FileStreams, FailToOpenWhatIsNotThere) {
    const test::NoDescriptorLeft guard;
    const auto in = opened<InputStream>("/tmp/missing/file");
    EXPECT_TRUE(in->fail());
    EXPECT_FALSE(in->is_open());

    const auto out = opened<OutputStream>("/tmp/missing/file");
    EXPECT_TRUE(out->fail());
    EXPECT_FALSE(out->is_open());
}

TEST(FileStreams, OpeningAgainClearsTheState) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "1");
    const auto in = opened<InputStream>(tree / "missing");
    const std::string path = tree / "file";
    in->open(std::wstring(path.begin(), path.end()), {}, share_mode::deny_none);

    EXPECT_TRUE(in->good());
    EXPECT_TRUE(in->is_open());
    EXPECT_EQ(in->get(), '1');
}

TEST(FileStreams, ClosingTwiceFails) {
    const test::TempTree tree;
    const auto out = opened<OutputStream>(tree / "file");
    out->close();
    EXPECT_TRUE(out->good());
    out->close();
    EXPECT_TRUE(out->fail());

    const auto in = opened<InputStream>(tree / "file");
    in->close();
    EXPECT_TRUE(in->good());
    in->close();
    EXPECT_TRUE(in->fail());
}

TEST(FileStreams, AreUsedThroughTheStandardInterfaces) {
    const test::TempTree tree;
    const std::unique_ptr<std::ostream> out = opened<OutputStream>(tree / "file");
    *out << "a\nb\n";
    out->flush();
    const std::unique_ptr<std::istream> in = opened<InputStream>(tree / "file");
    std::string line;
    std::getline(*in, line);
    std::getline(*in, line);

    EXPECT_EQ(line, "b");
    EXPECT_EQ(in->peek(), std::char_traits<char>::eof());
}

TEST(FileStreams, TheDestructorWritesWhatIsLeft) {
    const test::TempTree tree;
    *opened<OutputStream>(tree / "file") << "rest";

    EXPECT_EQ(test::contentOf(tree / "file"), "rest");
}

TEST(FileStreams, TheDestructorSwallowsAFailure) {
    const test::NoDescriptorLeft guard;

    EXPECT_NO_THROW(*opened<OutputStream>("/dev/full") << "lost");
}

TEST(FileStreams, AFullDiskShowsWhenFlushed) {
    const auto out = opened<OutputStream>("/dev/full");
    *out << "x";
    EXPECT_TRUE(out->good()) << "buffered";

    out->flush();
    EXPECT_TRUE(out->bad());
}

TEST(FileStreams, AFullDiskShowsAtOnceForLargeWrites) {
    const auto out = opened<OutputStream>("/dev/full");
    writeInChunks(*out, test::someBytes(200000), 200000);

    EXPECT_TRUE(out->bad());
}

TEST(FileStreams, ALimitOnTheSizeOfFilesIsAFailureAndKeepsWhatFitted) {
    test::runInChild([] {
        const test::TempTree tree;
        const std::string content = test::someBytes(300000);
        test::limitFileSize(100000);
        const auto out = opened<OutputStream>(tree / "file");
        writeInChunks(*out, content, 777);
        out->flush();

        EXPECT_TRUE(out->bad());
        EXPECT_EQ(test::contentOf(tree / "file"), content.substr(0, 100000));
    });
}

TEST(FileStreams, AFailingDiskIsBadAndNoEnd) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "abc");
    const auto in = opened<InputStream>(tree / "file");
    test::ScopedSystemCalls calls;
    calls->read = [](int, void*, size_t) {
        errno = EIO;
        return ssize_t{-1};
    };
    in->get();

    EXPECT_TRUE(in->bad());
    EXPECT_FALSE(in->eof());
}

}  // namespace
