#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <pkgcore/portable/filesystem/Item.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace {

using namespace fl::filesystem::posix;
using test::ScopedSystemCalls;
using test::TempTree;

/// How often the next calls are interrupted before they get through.
int interruptions = 0;

int interrupted() {
    --interruptions;
    errno = EINTR;
    return -1;
}

TEST(OpenAt, DescriptorIsClosedInAChild) {
    const FileDescriptor file = openAt(AT_FDCWD, "/dev/null", O_RDONLY);
    ASSERT_TRUE(file.isOpen());
    EXPECT_EQ(FD_CLOEXEC, ::fcntl(file.get(), F_GETFD));
}

TEST(OpenAt, FailureHoldsNothingAndTellsWhy) {
    const FileDescriptor file = openAt(AT_FDCWD, "/dev/null/x", O_RDONLY);
    EXPECT_EQ(ENOTDIR, errno);
    EXPECT_FALSE(file.isOpen());
}

TEST(OpenFolder, ALinkIsNoFolderWhicheverNumberTheSystemHasForThat) {
    for (const int number : {ELOOP, ENOTDIR}) {
        static int given;
        given = number;
        ScopedSystemCalls calls;
        calls->openat = [](int, const char*, int, mode_t) {
            errno = given;
            return -1;
        };
        EXPECT_FALSE(openFolder({AT_FDCWD, "link"}).isOpen());
        EXPECT_EQ(ENOTDIR, errno);
    }
}

TEST(OpenAt, GoesOnAfterASignal) {
    ScopedSystemCalls calls;
    calls->openat = [](int directory, const char* path, int flags, mode_t mode) {
        return interruptions > 0 ? interrupted() : kHostCalls.openat(directory, path, flags, mode);
    };
    interruptions = 3;
    EXPECT_TRUE(openAt(AT_FDCWD, "/dev/null", O_RDONLY).isOpen());
    EXPECT_EQ(0, interruptions);
}

TEST(ReadSome, GoesOnAfterASignal) {
    const TempTree tree;
    test::makeFile(tree / "file", "four");
    ScopedSystemCalls calls;
    calls->read = [](int descriptor, void* bytes, size_t count) {
        return interruptions > 0 ? interrupted() : kHostCalls.read(descriptor, bytes, count);
    };
    interruptions = 2;
    const FileDescriptor file = openAt(AT_FDCWD, (tree / "file").c_str(), O_RDONLY);
    std::array<char, 16> bytes{};
    EXPECT_EQ(4, readSome(file.get(), bytes.data(), bytes.size()));
    EXPECT_STREQ("four", bytes.data());
}

TEST(WriteAll, WritesOnAfterShortWritesAndSignals) {
    const TempTree tree;
    ScopedSystemCalls calls;
    calls->write = [](int descriptor, const void* bytes, size_t count) -> ssize_t {
        return interruptions++ % 2 == 0 ? (errno = EINTR, -1)
                                        : kHostCalls.write(descriptor, bytes, std::min<size_t>(count, 3));
    };
    interruptions = 0;
    const FileDescriptor file = openAt(AT_FDCWD, (tree / "file").c_str(), O_WRONLY | O_CREAT, 0600);
    EXPECT_EQ(0, writeAll(file.get(), "0123456789", 10));
    EXPECT_EQ("0123456789", test::contentOf(tree / "file"));
    EXPECT_EQ(8, interruptions);
}

TEST(WriteAll, TellsTheFirstFailure) {
    ScopedSystemCalls calls;
    calls->write = [](int, const void*, size_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
    EXPECT_EQ(ENOSPC, writeAll(1, "x", 1));
}

TEST(WriteAll, EndsWhereNothingMovesOn) {
    ScopedSystemCalls calls;
    calls->write = [](int, const void*, size_t) -> ssize_t { return 0; };
    EXPECT_EQ(EIO, writeAll(1, "x", 1));
}

TEST(WriteAll, NothingToWriteMakesNoCall) {
    ScopedSystemCalls calls;
    calls->write = [](int, const void*, size_t) -> ssize_t {
        ADD_FAILURE();
        return 0;
    };
    EXPECT_EQ(0, writeAll(1, nullptr, 0));
}

TEST(FileDescriptor, ClosesOnceAndOnlyWhatItHolds) {
    const test::NoDescriptorLeft noneLeft;
    FileDescriptor first = openAt(AT_FDCWD, "/dev/null", O_RDONLY);
    FileDescriptor second(std::move(first));
    EXPECT_FALSE(first.isOpen());
    first = openAt(AT_FDCWD, "/dev/null", O_RDONLY);
    second = std::move(first);
    EXPECT_TRUE(second.isOpen());
    const int number = second.release();
    EXPECT_FALSE(second.isOpen());
    EXPECT_EQ(0, ::close(number));
}

TEST(FileDescriptor, CloseTellsTheFailureAndIsNotRepeated) {
    static int calledTimes = 0;
    ScopedSystemCalls calls;
    calls->close = [](int) {
        ++calledTimes;
        errno = EDQUOT;
        return -1;
    };
    FileDescriptor file(4711);
    EXPECT_EQ(EDQUOT, file.close());
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ(0, file.close());
    EXPECT_EQ(1, calledTimes);
}

TEST(FileDescriptor, InterruptedCloseHasClosed) {
    static int calledTimes = 0;
    ScopedSystemCalls calls;
    calls->close = [](int) {
        ++calledTimes;
        errno = EINTR;
        return -1;
    };
    EXPECT_EQ(0, FileDescriptor(4711).close());
    EXPECT_EQ(1, calledTimes);
}

TEST(FileDescriptor, EndKeepsTheErrorNumber) {
    ScopedSystemCalls calls;
    calls->close = [](int) {
        errno = EIO;
        return -1;
    };
    errno = EXDEV;
    { const FileDescriptor file(4711); }
    EXPECT_EQ(EXDEV, errno);
}

}  // namespace
