// The copy loop between files that the back end opened, memory and standard streams.

#include <pkgcore/streams/ByteArrayInAdaptor.hpp>
#include <pkgcore/streams/ByteArrayOutAdaptor.hpp>
#include <pkgcore/streams/StdIStreamAdaptor.hpp>
#include <pkgcore/streams/StreamHelper.hpp>

#include "tests/e2e/LocalTest.hpp"

namespace test {

namespace {

using opc::StreamHelper;
using Bytes = std::vector<std::uint8_t>;

constexpr int binary = std::ios_base::binary;
constexpr std::size_t tenMiB = std::size_t{10} << 20;

class LocalStreamCopy : public LocalTest {
protected:
    auto input(std::string_view name) { return ops.createInputStream(tree.text(name), binary); }
    auto output(std::string_view name, int mode = binary) {
        return ops.createOutputStream(tree.text(name), mode);
    }
};

TEST_F(LocalStreamCopy, GoesFromFileToFileByteForByte) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{16'383}, std::size_t{16'384},
                                   std::size_t{65'537}, tenMiB}) {
        const std::string content = someBytes(size);
        makeFile(tree / "from", content);
        const auto to = output("to");
        EXPECT_TRUE(StreamHelper::copyStreamToStream(*input("from"), *to)) << size;
        EXPECT_TRUE(to->flush().good());
        EXPECT_TRUE(contentOf(tree / "to") == content) << size;
    }
}

TEST_F(LocalStreamCopy, GoesFromAFileIntoMemoryAndOut) {
    const std::string content = someBytes(300'000);
    makeFile(tree / "from", content);
    Bytes memory;
    opc::ByteArrayOutAdaptor intoMemory(memory);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(*input("from"), intoMemory));
    opc::ByteArrayInAdaptor fromMemory(memory);
    const auto to = output("to");
    EXPECT_TRUE(StreamHelper::copyStreamToStream(fromMemory, *to));
    to->flush();
    EXPECT_TRUE(contentOf(tree / "to") == content);
}

TEST_F(LocalStreamCopy, BeginsWhereBothFilesStand) {
    makeFile(tree / "from", "abcdef");
    makeFile(tree / "to", "123456");
    const auto from = input("from");
    from->seekg(2);
    const auto to = output("to", binary | std::ios_base::in);
    to->seekp(3);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(*from, *to));
    to->flush();
    EXPECT_EQ("123cdef", contentOf(tree / "to"));
}

TEST_F(LocalStreamCopy, AppendsToAFileThatWasOpenedForThat) {
    const std::string content = someBytes(100'000);
    makeFile(tree / "from", content);
    makeFile(tree / "to", "start ");
    const auto to = output("to", binary | std::ios_base::app);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(*input("from"), *to));
    to->flush();
    EXPECT_TRUE(contentOf(tree / "to") == "start " + content);
}

TEST_F(LocalStreamCopy, LeavesTheFlushToTheCaller) {
    makeFile(tree / "from", "abc");
    const auto to = output("to");
    EXPECT_TRUE(StreamHelper::copyStreamToStream(*input("from"), *to));
    EXPECT_EQ("", contentOf(tree / "to"));
    to->flush();
    EXPECT_EQ("abc", contentOf(tree / "to"));
}

TEST_F(LocalStreamCopy, IsFalseWhereTheDiskIsFull) {
    makeFile(tree / "from", someBytes(tenMiB));
    const auto full = ops.createOutputStream(u"/dev/full", binary);
    EXPECT_FALSE(StreamHelper::copyStreamToStream(*input("from"), *full));
    EXPECT_FALSE(full->good());
}

TEST_F(LocalStreamCopy, ShowsAFullDiskAtTheFlushWhereTheBytesWereBuffered) {
    makeFile(tree / "from", "abc");
    const auto full = ops.createOutputStream(u"/dev/full", binary);
    EXPECT_TRUE(StreamHelper::copyStreamToStream(*input("from"), *full));
    EXPECT_FALSE(full->flush().good());
}

TEST_F(LocalStreamCopy, AnAdaptorOverAFileIsReopenedAtItsStart) {
    makeFile(tree / "from", "abcdef");
    const auto from = input("from");
    opc::StdIStreamAdaptor in(*from);
    for (int round = 0; round < 3; ++round) {
        Bytes memory;
        opc::ByteArrayOutAdaptor out(memory);
        EXPECT_TRUE(StreamHelper::copyStreamToStream(in, out));
        EXPECT_EQ("abcdef", std::string(memory.begin(), memory.end()));
        EXPECT_TRUE(in.isDone());
        in.close();
        in.open();
    }
}

TEST_F(LocalStreamCopy, TheStreamsOutliveTheBackEndThatOpenedThem) {
    makeFile(tree / "from", "abc");
    boost::shared_ptr<std::istream> from;
    boost::shared_ptr<std::ostream> to;
    {
        opc::LocalFileSystemOps shortLived;
        from = shortLived.createInputStream(tree.text("from"), binary);
        to = shortLived.createOutputStream(tree.text("to"), binary);
    }
    EXPECT_TRUE(StreamHelper::copyStreamToStream(*from, *to));
    to.reset();
    EXPECT_EQ("abc", contentOf(tree / "to"));
}

}  // namespace
}  // namespace test
