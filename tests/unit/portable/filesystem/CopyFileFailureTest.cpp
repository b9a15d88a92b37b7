#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/SmallDisk.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/FailedNumber.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

using fl::filesystem::copy_file;
using fl::filesystem::copy_option;
using test::failCall;
using test::failedPath;
using test::failsWith;
using test::makeFile;
using test::ScopedSystemCalls;
using test::snapshot;
using test::someBytes;
using test::SystemCalls;

constexpr std::size_t kSeveralBuffers = 1'000'000;

/// A failed copy changes nothing: with "overwrite" the old destination stays whole, without it none appears.
class CopyFileFailure : public ::testing::TestWithParam<copy_option> {
protected:
    CopyFileFailure() {
        makeFile(tree / "a", someBytes(kSeveralBuffers), 0666);
        if (GetParam() == copy_option::overwrite_if_exists) {
            makeFile(tree / "b", "old");
        }
        before = snapshot(tree.path());
    }
    ~CopyFileFailure() override { EXPECT_EQ(before, snapshot(tree.path())); }

    void copy() const { copy_file(fromPath, toPath, GetParam()); }

    test::TempTree tree;
    const std::u16string fromPath = tree.text("a");
    const std::u16string toPath = tree.text("b");
    test::TreeSnapshot before;
    test::NoDescriptorLeft noDescriptorLeft;
};

INSTANTIATE_TEST_SUITE_P(Option, CopyFileFailure,
                         ::testing::Values(copy_option::fail_if_exists, copy_option::overwrite_if_exists),
                         [](const auto& option) {
                             return option.param == copy_option::fail_if_exists ? "FailIfExists"
                                                                                : "OverwriteIfExists";
                         });

TEST_P(CopyFileFailure, OfReadingNamesTheSource) {
    ScopedSystemCalls calls;
    failCall<&SystemCalls::read>(calls, 3, EIO);
    EXPECT_TRUE(failsWith(EIO, fromPath, [&] { copy(); }));
}

TEST_P(CopyFileFailure, OfWritingNamesTheDestination) {
    for (const int number : {1, 2, 4}) {
        ScopedSystemCalls calls;
        failCall<&SystemCalls::write>(calls, number, ENOSPC);
        EXPECT_TRUE(failsWith(ENOSPC, toPath, [&] { copy(); })) << number;
    }
}

TEST_P(CopyFileFailure, OfClosingTheDestinationIsOfWriting) {
    static int last = -1;
    ScopedSystemCalls calls;
    calls->write = [](int file, const void* bytes, size_t count) {
        last = file;
        return fl::filesystem::posix::kHostCalls.write(file, bytes, count);
    };
    calls->close = [](int file) {
        const int result = fl::filesystem::posix::kHostCalls.close(file);
        return file == last ? (errno = EIO, -1) : result;
    };
    EXPECT_TRUE(failsWith(EIO, toPath, [&] { copy(); }));
}

TEST_P(CopyFileFailure, OfReservingRoomIsReportedBeforeAnythingIsWritten) {
    ScopedSystemCalls calls;
    failCall<&SystemCalls::fallocate>(calls, 1, ENOSPC);
    test::countCall<&SystemCalls::write>(calls);
    EXPECT_TRUE(failsWith(ENOSPC, toPath, [&] { copy(); }));
    EXPECT_EQ(0, test::callsMade<&SystemCalls::write>());
}

TEST_P(CopyFileFailure, OfSettingThePermissionBits) {
    test::runInChild([&] {
        ::umask(077);
        ScopedSystemCalls calls;
        failCall<&SystemCalls::fchmod>(calls, 1, EPERM);
        EXPECT_EQ(toPath, failedPath<fl::filesystem::AccessDenied>([&] { copy(); }));
    });
}

TEST_P(CopyFileFailure, OfLookingAtTheFiles) {
    for (const int number : {1, 2}) {
        ScopedSystemCalls calls;
        failCall<&SystemCalls::fstat>(calls, number, EIO);
        EXPECT_TRUE(failsWith(EIO, number == 1 ? fromPath : toPath, [&] { copy(); }));
    }
}

TEST_P(CopyFileFailure, OfShorteningTheCopyOfAFileThatShrank) {
    static std::string path;
    path = tree / "shrinking";
    makeFile(path, someBytes(kSeveralBuffers));
    {
        ScopedSystemCalls calls;
        calls->read = [](int file, void* bytes, size_t count) {
            EXPECT_EQ(0, ::truncate(path.c_str(), 300'000));
            return fl::filesystem::posix::kHostCalls.read(file, bytes, count);
        };
        failCall<&SystemCalls::ftruncate>(calls, 1, EIO);
        EXPECT_TRUE(failsWith(EIO, toPath, [&] { copy_file(tree.text("shrinking"), toPath, GetParam()); }));
    }
    ::unlink(path.c_str());
}

TEST_P(CopyFileFailure, AtTheLimitOfAFilesSize) {
    test::runInChild([&] {
        test::limitFileSize(500'000);
        EXPECT_TRUE(failsWith(EFBIG, toPath, [&] { copy(); }));
    });
}

TEST_P(CopyFileFailure, AtTheLimitOfAFilesSizeWhereNothingCanBeReserved) {
    test::runInChild([&] {
        test::limitFileSize(500'000);
        ScopedSystemCalls calls;
        failCall<&SystemCalls::fallocate>(calls, 1, EOPNOTSUPP);
        EXPECT_TRUE(failsWith(EFBIG, toPath, [&] { copy(); }));
    });
}

TEST_P(CopyFileFailure, WithoutTheRightToRead) {
    test::runAsOrdinaryUser([&] {
        const test::TempTree own;
        makeFile(own / "a", "text", 0200);
        EXPECT_EQ(own.text("a"), failedPath<fl::filesystem::AccessDenied>(
                                     [&] { copy_file(own.text("a"), own.text("b"), GetParam()); }));
        EXPECT_FALSE(test::isThere(own / "b"));
    });
}

TEST_P(CopyFileFailure, WithoutTheRightToWrite) {
    test::runAsOrdinaryUser([&] {
        const test::TempTree own;
        makeFile(own / "a", "text");
        test::makeFolder(own / "folder", 0555);
        EXPECT_EQ(own.text("folder/b"), failedPath<fl::filesystem::AccessDenied>([&] {
                      copy_file(own.text("a"), own.text("folder/b"), GetParam());
                  }));
    });
}

TEST(CopyFileOver, LeavesTheOldContentWhenRenamingFails) {
    const test::TempTree tree;
    makeFile(tree / "a", "new");
    makeFile(tree / "b", "old");
    const test::TreeSnapshot before = snapshot(tree.path());
    ScopedSystemCalls calls;
    failCall<&SystemCalls::renameat>(calls, 1, EIO);
    EXPECT_TRUE(failsWith(EIO, tree.text("b"), [&] {
        copy_file(tree.text("a"), tree.text("b"), copy_option::overwrite_if_exists);
    }));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST(CopyFileOver, LeavesTheOldContentWithoutARandomName) {
    const test::TempTree tree;
    makeFile(tree / "a", "new");
    makeFile(tree / "b", "old");
    ScopedSystemCalls calls;
    failCall<&SystemCalls::getrandom>(calls, 1, EIO);
    EXPECT_THROW(copy_file(tree.text("a"), tree.text("b"), copy_option::overwrite_if_exists),
                 fl::filesystem::SystemError);
    EXPECT_EQ("old", test::contentOf(tree / "b"));
}

TEST(CopyFileFailureOnAFullDisk, LeavesTheOldContentAndNothingElse) {
    if (!test::canMountSmallDisk()) {
        GTEST_SKIP() << "needs the right to mount a small file system";
    }
    const test::TempTree tree;
    makeFile(tree / "a", someBytes(kSeveralBuffers));
    test::runInChild([&] {
        test::makeFolder(tree / "small");
        ASSERT_TRUE(test::mountSmallDisk(tree / "small", "512k"));
        makeFile(tree / "small/b", "old");
        for (const bool canReserve : {true, false}) {
            ScopedSystemCalls calls;
            if (!canReserve) failCall<&SystemCalls::fallocate>(calls, 1, EOPNOTSUPP);
            EXPECT_TRUE(failsWith(ENOSPC, tree.text("small/b"), [&] {
                copy_file(tree.text("a"), tree.text("small/b"), copy_option::overwrite_if_exists);
            }));
            EXPECT_TRUE(failsWith(ENOSPC, tree.text("small/c"), [&] {
                copy_file(tree.text("a"), tree.text("small/c"), copy_option::fail_if_exists);
            }));
        }
        EXPECT_EQ((test::TreeSnapshot{{"b", "file 0644 'old'"}}), snapshot(tree / "small"));
    });
}

}  // namespace
