#include <pkgcore/portable/filesystem/FileContent.hpp>

#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace {

using fl::filesystem::copy_file;
using fl::filesystem::copy_option;
using fl::filesystem::posix::kHostCalls;
using test::contentOf;
using test::makeFile;
using test::makeSparseFile;
using test::ScopedSystemCalls;
using test::someBytes;
using test::statusOf;
using test::SystemCalls;
using test::TempTree;

constexpr off_t kMebibyte = 1024 * 1024;
constexpr off_t kGibibyte = 1024 * kMebibyte;

class FileContent : public ::testing::TestWithParam<const char*> {
protected:
    void copy(std::string_view from = "a", std::string_view to = "b") const {
        copy_file(tree.text(from), tree.text(to), copy_option::fail_if_exists);
    }

    off_t bytesOnDisk(std::string_view name) const { return statusOf(tree / name).st_blocks * 512; }

    TempTree tree{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(On, FileContent, ::testing::Values("/tmp", "/dev/shm"),
                         [](const auto& option) { return option.index == 0 ? "Tmp" : "Shm"; });

std::string readAt(const std::string& path, off_t offset, std::size_t count) {
    std::string bytes(count, '?');
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t size = ::pread(file, bytes.data(), count, offset);
    ::close(file);
    bytes.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return bytes;
}

TEST_P(FileContent, KeepsAHoleOfAGibibyte) {
    const std::string island = someBytes(3 * kMebibyte + 17);
    const off_t offset = kGibibyte - 4 * kMebibyte - 5;
    makeSparseFile(tree / "a", kGibibyte, offset, island);
    copy();
    EXPECT_EQ(kGibibyte, statusOf(tree / "b").st_size);
    EXPECT_LE(bytesOnDisk("b"), bytesOnDisk("a") + kMebibyte);
    EXPECT_EQ(island, readAt(tree / "b", offset, island.size()));
    EXPECT_EQ(std::string(1000, '\0'), readAt(tree / "b", offset - 1000, 1000));
    EXPECT_EQ(std::string(1000, '\0'), readAt(tree / "b", offset + static_cast<off_t>(island.size()), 1000));
}

TEST_P(FileContent, KeepsSeveralIslandsInTheirPlaces) {
    makeSparseFile(tree / "a", 40 * kMebibyte, 0, someBytes(5000));
    const int file = ::open((tree / "a").c_str(), O_WRONLY | O_CLOEXEC);
    for (off_t at = 3 * kMebibyte; at < 40 * kMebibyte; at += 7 * kMebibyte) {
        ASSERT_EQ(6, ::pwrite(file, "island", 6, at));
    }
    ::close(file);
    copy();
    EXPECT_EQ(contentOf(tree / "a"), contentOf(tree / "b"));
    EXPECT_LE(bytesOnDisk("b"), bytesOnDisk("a"));
}

TEST_P(FileContent, KeepsAFileThatIsAllHole) {
    makeSparseFile(tree / "a", 5 * kMebibyte + 1, 0, "");
    copy();
    EXPECT_EQ(5 * kMebibyte + 1, statusOf(tree / "b").st_size);
    EXPECT_EQ(0, bytesOnDisk("b"));
}

TEST_P(FileContent, CopiesHolesAsZerosWhereTheyCannotBeFound) {
    makeSparseFile(tree / "a", 2 * kMebibyte, kMebibyte, "island");
    ScopedSystemCalls calls;
    calls->lseek = [](int file, off_t offset, int whence) {
        return whence == SEEK_DATA ? (errno = EINVAL, off_t{-1}) : kHostCalls.lseek(file, offset, whence);
    };
    copy();
    EXPECT_EQ(contentOf(tree / "a"), contentOf(tree / "b"));
}

TEST_P(FileContent, CopiesInPiecesOfAnySize) {
    makeFile(tree / "a", someBytes(100'000));
    ScopedSystemCalls calls;
    calls->read = [](int file, void* bytes, size_t count) {
        return kHostCalls.read(file, bytes, std::min<size_t>(count, 4093));
    };
    calls->write = [](int file, const void* bytes, size_t count) {
        return kHostCalls.write(file, bytes, std::min<size_t>(count, 1021));
    };
    copy();
    EXPECT_EQ(contentOf(tree / "a"), contentOf(tree / "b"));
}

TEST_P(FileContent, CopiesAllOfAFileThatGrows) {
    static std::string path;
    static int growths = 0;
    path = tree / "a";
    growths = 3;
    makeFile(path, someBytes(300'000));
    ScopedSystemCalls calls;
    calls->read = [](int file, void* bytes, size_t count) {
        if (growths-- > 0) makeFile(path, contentOf(path) + someBytes(300'000));
        return kHostCalls.read(file, bytes, count);
    };
    copy();
    EXPECT_EQ(1'200'000, statusOf(tree / "b").st_size);
    EXPECT_EQ(contentOf(path), contentOf(tree / "b"));
}

TEST_P(FileContent, EndsWithAFileThatShrinks) {
    static std::string path;
    path = tree / "a";
    makeFile(path, someBytes(3 * kMebibyte));
    ScopedSystemCalls calls;
    calls->read = [](int file, void* bytes, size_t count) {
        EXPECT_EQ(0, ::truncate(path.c_str(), kMebibyte));
        return kHostCalls.read(file, bytes, count);
    };
    copy();
    EXPECT_EQ(someBytes(3 * kMebibyte).substr(0, kMebibyte), contentOf(tree / "b"));
}

TEST_P(FileContent, EndsWithAnIslandThatShrinks) {
    static std::string path;
    path = tree / "a";
    makeSparseFile(path, 8 * kMebibyte, kMebibyte, someBytes(2 * kMebibyte));
    ScopedSystemCalls calls;
    calls->read = [](int file, void* bytes, size_t count) {
        EXPECT_EQ(0, ::truncate(path.c_str(), 2 * kMebibyte));
        return kHostCalls.read(file, bytes, count);
    };
    copy();
    EXPECT_EQ(contentOf(path), contentOf(tree / "b"));
}

TEST_P(FileContent, CopiesWhereNothingCanBeReserved) {
    makeFile(tree / "a", someBytes(700'000));
    for (const int error : {EOPNOTSUPP, EINVAL, ENOSYS, EINTR}) {
        ScopedSystemCalls calls;
        test::failCall<&SystemCalls::fallocate>(calls, 1, error);
        copy();
        EXPECT_EQ(contentOf(tree / "a"), contentOf(tree / "b")) << error;
        ::unlink((tree / "b").c_str());
    }
}

TEST_P(FileContent, IsNotCopiedWhereBlocksCanBeShared) {
    makeFile(tree / "a", "text");
    static int shared = 0;
    shared = 0;
    ScopedSystemCalls calls;
    calls->ficlone = [](int, int) { return ++shared, 0; };
    test::countCall<&SystemCalls::read>(calls);
    copy();
    EXPECT_EQ(1, shared);
    EXPECT_EQ(0, test::callsMade<&SystemCalls::read>());
}

TEST_P(FileContent, CopiesFilesOfProcWhichHaveNoSize) {
    for (const char* const path : {"/proc/version", "/proc/filesystems"}) {
        copy_file(test::text(path), tree.text("b"), copy_option::overwrite_if_exists);
        EXPECT_EQ(contentOf(path), contentOf(tree / "b"));
    }
    copy_file(u"/proc/self/status", tree.text("b"), copy_option::overwrite_if_exists);
    EXPECT_EQ(0U, contentOf(tree / "b").find("Name:"));
    EXPECT_NE(std::string::npos, contentOf(tree / "b").find("nonvoluntary_ctxt_switches:"));
}

TEST_P(FileContent, CopiesFilesOfSysWhichClaimMoreThanTheyHold) {
    const std::string path = "/sys/devices/system/cpu/online";
    if (!test::isThere(path)) {
        GTEST_SKIP() << "needs " << path;
    }
    copy_file(test::text(path), tree.text("b"), copy_option::fail_if_exists);
    EXPECT_EQ(contentOf(path), contentOf(tree / "b"));
}

}  // namespace
