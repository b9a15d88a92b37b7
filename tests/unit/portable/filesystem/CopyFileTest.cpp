#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using fl::filesystem::copy_file;
using fl::filesystem::copy_option;
using test::contentOf;
using test::failCall;
using test::failedPath;
using test::makeFile;
using test::makeFolder;
using test::makeLink;
using test::makePipe;
using test::modeOf;
using test::ScopedSystemCalls;
using test::snapshot;
using test::someBytes;
using test::SystemCalls;
using test::TempTree;

constexpr copy_option kNew = copy_option::fail_if_exists;
constexpr copy_option kOver = copy_option::overwrite_if_exists;

/// What holds for both options.
class CopyFile : public ::testing::TestWithParam<copy_option> {
protected:
    void copy(std::string_view from, std::string_view to) const {
        copy_file(tree.text(from), tree.text(to), GetParam());
    }

    template <typename Failure>
    bool copyThrows(std::string_view about, std::string_view from, std::string_view to) const {
        return tree.text(about) == failedPath<Failure>([&] { copy(from, to); });
    }

    TempTree tree;
    test::NoDescriptorLeft noDescriptorLeft;
};

INSTANTIATE_TEST_SUITE_P(Option, CopyFile, ::testing::Values(kNew, kOver), [](const auto& option) {
    return option.param == kNew ? "FailIfExists" : "OverwriteIfExists";
});

TEST_P(CopyFile, CarriesTheContentOfAnySize) {
    for (const std::size_t size :
         {0U, 1U, 4096U, 16383U, 16384U, 16385U, 262143U, 262144U, 262145U, 1048579U}) {
        const std::string name = std::to_string(size);
        makeFile(tree / name, someBytes(size));
        copy(name, name + ".copy");
        EXPECT_EQ(contentOf(tree / name), contentOf(tree / (name + ".copy"))) << size;
    }
}

TEST_P(CopyFile, CarriesThePermissionBitsWhateverTheMask) {
    test::runInChild([&] {
        ::umask(077);
        makeFile(tree / "a", "text");
        for (const mode_t bits : {0666U, 0444U, 0755U, 0600U, 0400U, 0777U}) {
            test::setMode(tree / "a", bits);
            copy("a", "b");
            EXPECT_EQ(bits, modeOf(tree / "b"));
            ::unlink((tree / "b").c_str());
        }
    });
}

// Of a file that an ordinary user writes to, the system takes these bits anyway; not of an empty one.
TEST_P(CopyFile, LeavesOutSetUidSetGidAndTheStickyBit) {
    makeFile(tree / "a", "text", 07755);
    makeFile(tree / "empty", "", 07755);
    copy("a", "b");
    EXPECT_EQ(0755U, modeOf(tree / "b"));
    copy("empty", "c");
    EXPECT_EQ(0755U, modeOf(tree / "c"));
}

TEST_P(CopyFile, CopiesAFileThatMayOnlyBeRead) {
    test::runAsOrdinaryUser([&] {
        const TempTree own;
        makeFile(own / "a", "text", 0444);
        copy_file(own.text("a"), own.text("b"), GetParam());
        EXPECT_EQ("text", contentOf(own / "b"));
        EXPECT_EQ(0444U, modeOf(own / "b"));
    });
}

TEST_P(CopyFile, IsNeverMoreOpenThanItsSource) {
    static bool written = false;
    written = false;
    test::runInChild([&] {
        ::umask(0);
        makeFile(tree / "a", "text", 0640);
        ScopedSystemCalls calls;
        calls->openat = [](int folder, const char* path, int flags, mode_t mode) {
            EXPECT_EQ(0U, (flags & O_CREAT) != 0 ? mode & ~0640U : 0U);
            return fl::filesystem::posix::kHostCalls.openat(folder, path, flags, mode);
        };
        calls->write = [](int file, const void* bytes, size_t count) {
            struct stat status {};
            EXPECT_EQ(0, ::fstat(file, &status));
            EXPECT_EQ(0640U, status.st_mode & 07777U);
            written = true;
            return fl::filesystem::posix::kHostCalls.write(file, bytes, count);
        };
        copy("a", "b");
        EXPECT_TRUE(written);
    });
}

TEST_P(CopyFile, RefusesWhatIsNoFile) {
    makeFolder(tree / "folder");
    makePipe(tree / "pipe");
    makeFile(tree / "file");
    makeLink("file", tree / "link");
    EXPECT_TRUE(copyThrows<fl::filesystem::FileIsDirectory>("folder", "folder", "new"));
    EXPECT_TRUE(copyThrows<fl::filesystem::InvalidOperation>("pipe", "pipe", "new"));
    EXPECT_TRUE(copyThrows<fl::filesystem::InvalidOperation>("link", "link", "new"));
    EXPECT_TRUE(copyThrows<fl::filesystem::PathNotFound>("missing", "missing", "new"));
    EXPECT_EQ(u"/dev/null", failedPath<fl::filesystem::InvalidOperation>(
                                [&] { copy_file(u"/dev/null", tree.text("new"), GetParam()); }));
    EXPECT_FALSE(test::isThere(tree / "new"));
}

TEST_P(CopyFile, RefusesASocket) {
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (tree / "socket").copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(0, ::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    ::close(listener);
    EXPECT_TRUE(copyThrows<fl::filesystem::InvalidOperation>("socket", "socket", "new"));
}

TEST_P(CopyFile, DoesNotOpenWhatIsNoFile) {
    makePipe(tree / "pipe");
    ScopedSystemCalls calls;
    test::countCall<&SystemCalls::openat>(calls);
    EXPECT_TRUE(copyThrows<fl::filesystem::InvalidOperation>("pipe", "pipe", "new"));
    EXPECT_EQ(0, test::callsMade<&SystemCalls::openat>());
}

TEST_P(CopyFile, DoesNotWaitForAPipeThatTookTheFilesPlace) {
    makeFile(tree / "a", "text");
    static std::string path;
    path = tree / "a";
    ScopedSystemCalls calls;
    calls->openat = [](int folder, const char* name, int flags, mode_t mode) {
        if (path == name) {
            ::unlink(path.c_str());
            makePipe(path);
            EXPECT_NE(0, flags & O_NONBLOCK);
            flags |= O_NONBLOCK;  // the test does not wait either
        }
        return fl::filesystem::posix::kHostCalls.openat(folder, name, flags, mode);
    };
    EXPECT_TRUE(copyThrows<fl::filesystem::InvalidOperation>("a", "a", "new"));
    EXPECT_FALSE(test::isThere(tree / "new"));
}

TEST_P(CopyFile, DoesNotFollowALinkThatTookTheFilesPlace) {
    makeFile(tree / "a", "text");
    makeFile(tree / "secret", "secret");
    static std::string path;
    path = tree / "a";
    ScopedSystemCalls calls;
    calls->openat = [](int folder, const char* name, int flags, mode_t mode) {
        if (path == name) {
            ::unlink(path.c_str());
            makeLink("secret", path);
        }
        return fl::filesystem::posix::kHostCalls.openat(folder, name, flags, mode);
    };
    EXPECT_TRUE(copyThrows<fl::filesystem::InvalidOperation>("a", "a", "new"));
    EXPECT_FALSE(test::isThere(tree / "new"));
}

TEST_P(CopyFile, RefusesAFileOntoItselfUnderAnyName) {
    makeFolder(tree / "folder");
    makeFile(tree / "folder/a", "text");
    makeLink("folder", tree / "way");
    ASSERT_EQ(0, ::link((tree / "folder/a").c_str(), (tree / "hard").c_str()));
    const test::TreeSnapshot before = snapshot(tree.path());
    for (const char* const to : {"folder/a", "folder/../folder//./a", "way/a", "hard"}) {
        EXPECT_TRUE(copyThrows<fl::filesystem::FileExistsError>(to, "folder/a", to));
    }
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_P(CopyFile, TellsWhichPathIsMissing) {
    makeFile(tree / "a", "text");
    EXPECT_TRUE(copyThrows<fl::filesystem::PathNotFound>("no/b", "a", "no/b"));
    EXPECT_TRUE(copyThrows<fl::filesystem::NotDirectoryError>("a/b", "a", "a/b"));
    EXPECT_TRUE(copyThrows<fl::filesystem::PathNotFound>("no/a", "no/a", "b"));
    EXPECT_EQ(std::u16string(),
              failedPath<fl::filesystem::PathNotFound>([&] { copy_file(u"", tree.text("b"), GetParam()); }));
    EXPECT_EQ(std::u16string(),
              failedPath<fl::filesystem::PathNotFound>([&] { copy_file(tree.text("a"), u"", GetParam()); }));
}

TEST_P(CopyFile, TakesNamesOfTheLongestLength) {
    makeFile(tree / "a", "text");
    const std::string longest(255, 'n');
    copy("a", longest);
    EXPECT_EQ("text", contentOf(tree / longest));
    const std::string tooLong(256, 'n');
    EXPECT_TRUE(copyThrows<fl::filesystem::FileNameTooLarge>(tooLong, "a", tooLong));
}

TEST_P(CopyFile, TakesNamesThatAreNotUtf8) {
    makeFile(tree / "a\xFF", "text");
    copy_file(tree.text(u"a\xDCFF"), tree.text(u"b\xDC80"), GetParam());
    EXPECT_EQ("text", contentOf(tree / "b\x80"));
}

TEST_P(CopyFile, TakesRelativePaths) {
    test::runInChild([&] {
        ASSERT_EQ(0, ::chdir(tree.path().c_str()));
        makeFile("a", "text");
        copy_file(u"a", u"b", GetParam());
        EXPECT_EQ("text", contentOf("b"));
    });
}

TEST_P(CopyFile, LosesNothingWhenSignalsInterruptEveryCall) {
    makeFile(tree / "a", someBytes(600'000), 0777);
    test::makeSparseFile(tree / "sparse", 600'000, 300'000, "island");
    test::runInChild([&] {
        ::umask(077);
        ScopedSystemCalls calls;
        test::interruptCalls<&SystemCalls::openat, &SystemCalls::read, &SystemCalls::write,
                             &SystemCalls::lseek, &SystemCalls::ftruncate, &SystemCalls::fallocate,
                             &SystemCalls::ficlone, &SystemCalls::fstat, &SystemCalls::fstatat,
                             &SystemCalls::renameat, &SystemCalls::fchmod, &SystemCalls::getrandom>(calls);
        copy("a", "b");
        copy("sparse", "sparse.copy");
    });
    EXPECT_EQ(contentOf(tree / "a"), contentOf(tree / "b"));
    EXPECT_EQ(0777U, modeOf(tree / "b"));
    EXPECT_EQ(contentOf(tree / "sparse"), contentOf(tree / "sparse.copy"));
}

TEST_P(CopyFile, LeavesNoTemporaryNameBehind) {
    makeFile(tree / "a", "text");
    copy("a", "b");
    EXPECT_EQ((test::TreeSnapshot{{"a", "file 0644 'text'"}, {"b", "file 0644 'text'"}}),
              snapshot(tree.path()));
}

TEST(CopyFileNew, LeavesWhatIsThere) {
    const TempTree tree;
    makeFile(tree / "a", "new");
    makeFile(tree / "file", "old");
    makeFolder(tree / "folder");
    makeLink("nowhere", tree / "link");
    const test::TreeSnapshot before = snapshot(tree.path());
    for (const char* const to : {"file", "folder", "link", "link/"}) {
        EXPECT_EQ(tree.text(to), failedPath<fl::filesystem::FileExistsError>(
                                     [&] { copy_file(tree.text("a"), tree.text(to), kNew); }));
    }
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST(CopyFileOver, ReplacesAFileAndALinkItself) {
    const TempTree tree;
    makeFile(tree / "a", "new", 0640);
    makeFile(tree / "file", "old and longer", 0400);
    makeLink("file", tree / "link");
    copy_file(tree.text("a"), tree.text("link"), kOver);
    EXPECT_EQ("old and longer", contentOf(tree / "file"));
    copy_file(tree.text("a"), tree.text("file"), kOver);
    EXPECT_EQ((test::TreeSnapshot{
                  {"a", "file 0640 'new'"}, {"file", "file 0640 'new'"}, {"link", "file 0640 'new'"}}),
              snapshot(tree.path()));
}

TEST(CopyFileOver, ReplacesALinkToItsSourceByACopy) {
    const TempTree tree;
    makeFile(tree / "a", "text");
    makeLink("a", tree / "link");
    copy_file(tree.text("a"), tree.text("link"), kOver);
    EXPECT_EQ((test::TreeSnapshot{{"a", "file 0644 'text'"}, {"link", "file 0644 'text'"}}),
              snapshot(tree.path()));
}

TEST(CopyFileOver, ReplacesNeitherFoldersNorDevices) {
    const TempTree tree;
    makeFile(tree / "a", "text");
    makeFolder(tree / "folder");
    makePipe(tree / "pipe");
    const test::TreeSnapshot before = snapshot(tree.path());
    EXPECT_EQ(tree.text("folder"), failedPath<fl::filesystem::FileIsDirectory>(
                                       [&] { copy_file(tree.text("a"), tree.text("folder"), kOver); }));
    EXPECT_EQ(tree.text("pipe"), failedPath<fl::filesystem::InvalidOperation>(
                                     [&] { copy_file(tree.text("a"), tree.text("pipe"), kOver); }));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST(CopyFileOver, KeepsReadersOfTheOldContent) {
    const TempTree tree;
    makeFile(tree / "a", "new");
    makeFile(tree / "b", "old");
    const int reader = ::open((tree / "b").c_str(), O_RDONLY | O_CLOEXEC);
    copy_file(tree.text("a"), tree.text("b"), kOver);
    char content[4] = {};
    EXPECT_EQ(3, ::read(reader, content, sizeof content));
    EXPECT_STREQ("old", content);
    ::close(reader);
}

}  // namespace
