// What a full disk, or one that fails, does to a file buffer.

#include <pkgcore/platform/filesystem/FileStreams.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/FileBufferCalls.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

namespace {

using fl::filesystem::posix::kHostCalls;
using std::ios_base;
using test::get;
using test::opened;
using test::put;
using test::tell;

/// A disk with room for `roomLeft` bytes.
struct SmallDisk {
    explicit SmallDisk(size_t room) {
        roomLeft = room;
        calls->write = [](int descriptor, const void* bytes, size_t count) -> ssize_t {
            const size_t fitting = std::min(count, roomLeft);
            if (fitting == 0) {
                errno = ENOSPC;
                return -1;
            }
            roomLeft -= fitting;
            return kHostCalls.write(descriptor, bytes, fitting);
        };
    }
    static inline size_t roomLeft;
    test::ScopedSystemCalls calls;
};

TEST(FileBuffer, AfterAFullDiskEachByteIsWrittenOnce) {
    const test::TempTree tree;
    const std::string content = test::someBytes(3000);
    const auto buffer = opened(tree / "file", ios_base::out);
    SmallDisk disk(1234);
    EXPECT_EQ(put(*buffer, content), 3000) << "buffered";

    EXPECT_EQ(buffer->pubsync(), -1);
    EXPECT_EQ(buffer->pubsync(), -1);
    EXPECT_EQ(std::streamoff(buffer->pubseekpos(0)), -1) << "what waits cannot be left behind";
    EXPECT_EQ(tell(*buffer), 3000);
    SmallDisk::roomLeft = 1000000;
    EXPECT_EQ(put(*buffer, content), 3000);
    EXPECT_TRUE(buffer->close());
    EXPECT_EQ(test::contentOf(tree / "file"), content + content);
}

TEST(FileBuffer, AFullDiskTellsHowMuchOfALargeWriteWasTaken) {
    const test::TempTree tree;
    const std::string content = test::someBytes(300000);
    const auto buffer = opened(tree / "file", ios_base::out);
    put(*buffer, "begin");
    SmallDisk disk(100000);

    const auto taken = static_cast<std::size_t>(put(*buffer, content));
    EXPECT_LT(taken, content.size());
    SmallDisk::roomLeft = 1000000;
    EXPECT_TRUE(buffer->close());
    EXPECT_EQ(test::contentOf(tree / "file"), "begin" + content.substr(0, taken));
}

TEST(FileBuffer, AFullBufferOnAFullDiskTakesNoByteMore) {
    const test::TempTree tree;
    const auto buffer = opened(tree / "file", ios_base::out);
    SmallDisk disk(0);
    int taken = 0;
    while (buffer->sputc('x') == 'x') {
        ++taken;
    }

    EXPECT_EQ(taken, 64 * 1024);
    SmallDisk::roomLeft = 1000000;
    EXPECT_TRUE(buffer->close());
    EXPECT_EQ(test::contentOf(tree / "file"), std::string(64 * 1024, 'x'));
}

TEST(FileBuffer, ClosingReportsWhatCouldNotBeWritten) {
    const test::NoDescriptorLeft guard;
    const auto buffer = opened("/dev/full", ios_base::out);
    put(*buffer, "x");

    EXPECT_FALSE(buffer->close());
    EXPECT_FALSE(buffer->isOpen());
}

TEST(FileBuffer, ClosingReportsAFailureOfTheCloseItself) {
    const test::NoDescriptorLeft guard;
    const test::TempTree tree;
    const auto buffer = opened(tree / "file", ios_base::out);
    test::ScopedSystemCalls calls;
    calls->close = [](int descriptor) {
        kHostCalls.close(descriptor);
        errno = EIO;
        return -1;
    };

    EXPECT_FALSE(buffer->close());
    EXPECT_FALSE(buffer->isOpen());
}

TEST(FileBuffer, ReadingFromAFailingDiskIsNoEndOfFile) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "abc");
    const auto buffer = opened(tree / "file", ios_base::in);
    test::ScopedSystemCalls calls;
    calls->read = [](int, void*, size_t) {
        errno = EIO;
        return ssize_t{-1};
    };

    EXPECT_THROW(buffer->sgetc(), ios_base::failure);
    EXPECT_THROW(get(*buffer, 3), ios_base::failure);
    EXPECT_THROW(get(*buffer, 100000), ios_base::failure);
    calls->read = kHostCalls.read;
    EXPECT_EQ(get(*buffer, 5), "abc");
}

TEST(FileBuffer, WritesNothingWhereItCannotGoBackOverWhatItReadAhead) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "abcdef");
    const auto buffer = opened(tree / "file", ios_base::in | ios_base::out);
    EXPECT_EQ(buffer->sbumpc(), 'a');
    test::ScopedSystemCalls calls;
    calls->lseek = [](int, off_t, int) -> off_t {
        errno = ESPIPE;
        return -1;
    };
    EXPECT_EQ(put(*buffer, "xy"), 0);
    EXPECT_EQ(get(*buffer, 1), "b") << "what was read is kept";
    calls->lseek = kHostCalls.lseek;
    EXPECT_EQ(put(*buffer, "xy"), 2);
    EXPECT_TRUE(buffer->close());
    EXPECT_EQ(test::contentOf(tree / "file"), "abxyef");
}

TEST(FileBuffer, AFullDiskBeforeReadingIsNoEndOfFile) {
    const test::TempTree tree;
    test::makeFile(tree / "file", "abcdef");
    const auto buffer = opened(tree / "file", ios_base::in | ios_base::out);
    buffer->sputc('x');
    test::ScopedSystemCalls calls;
    calls->write = [](int, const void*, size_t) {
        errno = ENOSPC;
        return ssize_t{-1};
    };
    EXPECT_THROW(buffer->sgetc(), ios_base::failure);
    EXPECT_THROW(get(*buffer, 3), ios_base::failure);
    calls->write = kHostCalls.write;
    EXPECT_EQ(get(*buffer, 5), "bcdef");
    EXPECT_EQ(test::contentOf(tree / "file"), "xbcdef");
}

}  // namespace
