#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/CopyDirectoryFixture.hpp"
#include "tests/unit/portable/filesystem/FailedNumber.hpp"
#include "tests/unit/portable/filesystem/MirrorMount.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using fl::filesystem::copy_directory;
using fl::filesystem::FileExistsError;
using fl::filesystem::InvalidArgument;
using fl::filesystem::InvalidOperation;
using fl::filesystem::NotDirectoryError;
using fl::filesystem::PathNotFound;
using fl::filesystem::posix::kHostCalls;
using test::CopyDirectory;
using test::failedPath;
using test::isThere;
using test::makeFile;
using test::makeFolder;
using test::makeLink;
using test::ScopedSystemCalls;
using test::snapshot;
using test::SystemCalls;
using test::TempTree;

TEST_F(CopyDirectory, CopiesAWholeTree) {
    fill("a");
    copy();
    expectSame();
}

TEST_F(CopyDirectory, CopiesAnEmptyFolder) {
    makeFolder(tree / "a");
    copy();
    expectSame();
}

TEST_F(CopyDirectory, TakesTrailingSeparatorsAndRelativePaths) {
    fill("a");
    copy("a//", "b/");
    expectSame();
    test::runInChild([&] {
        ASSERT_EQ(0, ::chdir((tree / "a").c_str()));
        copy_directory(u".", u"../c");
        copy_directory(u"inner", u"../d");
    });
    EXPECT_EQ(snapshot(tree / "a"), snapshot(tree / "c"));
    EXPECT_EQ(snapshot(tree / "a/inner"), snapshot(tree / "d"));
}

TEST_F(CopyDirectory, CopiesLinksByteByByte) {
    makeFolder(tree / "a");
    makeLink("\xFF\xFE/../x//", tree / "a/odd");
    makeLink("/", tree / "a/absolute");
    makeLink(std::string(4095, 'x'), tree / "a/long");
    copy();
    expectSame();
}

TEST_F(CopyDirectory, CopiesNamesOfEveryKind) {
    makeFolder(tree / "a");
    for (const char* const name : {"...", " ", "\n", "\xFF\xFE", "\\", "\xC3\xA4"}) {
        makeFolder(tree / ("a/" + std::string(name)));
        makeFile(tree / ("a/" + std::string(name) + "/" + name), name);
    }
    copy();
    expectSame();
}

TEST_F(CopyDirectory, GivesThePermissionBitsWhateverTheMask) {
    fill("a");
    makeFile(tree / "a/open", "", 0666);
    makeFile(tree / "a/runs", "", 0777);
    makeFolder(tree / "a/everyones", 01777);
    test::setMode(tree / "a/everyones", 0777);
    test::runInChild([&] {
        ::umask(077);
        copy();
    });
    expectSame();
}

TEST_F(CopyDirectory, FillsAFolderThatMayNotBeWritten) {
    test::runAsOrdinaryUser([] {
        const TempTree own;
        makeFolder(own / "a");
        makeFile(own / "a/file", "text");
        test::setMode(own / "a", 0555);
        copy_directory(own.text("a"), own.text("b"));
        EXPECT_EQ((test::TreeSnapshot{{"a", "folder 0555"},
                                      {"a/file", "file 0644 'text'"},
                                      {"b", "folder 0555"},
                                      {"b/file", "file 0644 'text'"}}),
                  snapshot(own.path()));
    });
}

TEST_F(CopyDirectory, LetsNobodyElseIntoAFolderThatIsBeingFilled) {
    fill("a");
    test::setMode(tree / "a", 0777);
    static int files = 0;
    files = 0;
    test::runInChild([&] {
        ::umask(0);
        ScopedSystemCalls calls;
        calls->openat = [](int folder, const char* name, int flags, mode_t mode) {
            struct stat status {};
            if ((flags & O_CREAT) != 0) {
                EXPECT_EQ(0, ::fstat(folder, &status));
                EXPECT_EQ(0700U, status.st_mode & 07777U);
                ++files;
            }
            return kHostCalls.openat(folder, name, flags, mode);
        };
        copy();
        EXPECT_EQ(2, files);
    });
    expectSame();
}

TEST_F(CopyDirectory, MergesAndLeavesTheBitsOfFoldersThatExist) {
    fill("a");
    makeFolder(tree / "b", 0711);
    makeFolder(tree / "b/inner", 0733);
    makeFile(tree / "b/inner/old", "old");
    copy();
    EXPECT_EQ(0711U, test::modeOf(tree / "b"));
    EXPECT_EQ(0733U, test::modeOf(tree / "b/inner"));
    EXPECT_EQ("old", test::contentOf(tree / "b/inner/old"));
    EXPECT_EQ("text", test::contentOf(tree / "b/inner/file"));
    EXPECT_EQ("nowhere", test::linkTextOf(tree / "b/dangling"));
}

TEST_F(CopyDirectory, DoesNotReplaceFilesOrLinks) {
    makeFolder(tree / "a");
    makeFolder(tree / "a/inner");
    makeFile(tree / "a/inner/file", "new");
    makeFolder(tree / "b");
    makeFolder(tree / "b/inner");
    makeFile(tree / "b/inner/file", "old");
    EXPECT_TRUE(copyThrows<FileExistsError>("b/inner/file"));
    EXPECT_EQ("old", test::contentOf(tree / "b/inner/file"));
    ::unlink((tree / "b/inner/file").c_str());
    makeLink("nowhere", tree / "b/inner/file");
    EXPECT_TRUE(copyThrows<FileExistsError>("b/inner/file"));
    ::unlink((tree / "a/inner/file").c_str());
    makeLink("x", tree / "a/inner/file");
    EXPECT_TRUE(copyThrows<FileExistsError>("b/inner/file"));
    EXPECT_EQ("nowhere", test::linkTextOf(tree / "b/inner/file"));
}

TEST_F(CopyDirectory, PutsAFolderInNoOtherItemsPlace) {
    makeFolder(tree / "a");
    makeFolder(tree / "a/inner");
    makeFile(tree / "a/inner/file", "text");
    makeFolder(tree / "canary");
    makeFolder(tree / "b");
    makeFile(tree / "b/inner", "file");
    EXPECT_TRUE(copyThrows<NotDirectoryError>("b/inner"));
    ::unlink((tree / "b/inner").c_str());
    makeLink("../canary", tree / "b/inner");
    EXPECT_TRUE(copyThrows<NotDirectoryError>("b/inner"));
    EXPECT_EQ(test::TreeSnapshot(), snapshot(tree / "canary"));
}

TEST_F(CopyDirectory, TakesALinkAtEitherEndForALink) {
    fill("a");
    makeFolder(tree / "canary");
    makeLink("a", tree / "toA");
    makeLink("canary", tree / "toCanary");
    makeLink("new", tree / "dangling");
    const test::TreeSnapshot before = snapshot(tree.path());
    EXPECT_TRUE(copyThrows<NotDirectoryError>("toA", "toA", "b"));
    EXPECT_TRUE(copyThrows<NotDirectoryError>("toA/", "toA/", "b"));
    EXPECT_TRUE(copyThrows<NotDirectoryError>("toCanary", "a", "toCanary"));
    EXPECT_TRUE(copyThrows<NotDirectoryError>("toCanary/", "a", "toCanary/"));
    EXPECT_TRUE(copyThrows<NotDirectoryError>("dangling", "a", "dangling"));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(CopyDirectory, FollowsLinksOnTheWayToEitherEnd) {
    makeFolder(tree / "real");
    fill("real/a");
    makeLink("real", tree / "way");
    copy("way/a", "way/b");
    EXPECT_EQ(snapshot(tree / "real/a"), snapshot(tree / "real/b"));
}

TEST_F(CopyDirectory, TellsWhichPathIsWrong) {
    fill("a");
    EXPECT_TRUE(copyThrows<PathNotFound>("no", "no", "b"));
    EXPECT_TRUE(copyThrows<PathNotFound>("no/b", "a", "no/b"));
    EXPECT_TRUE(copyThrows<NotDirectoryError>("a/file", "a/file", "b"));
    EXPECT_TRUE(copyThrows<NotDirectoryError>("a/file", "a", "a/file"));
    EXPECT_TRUE(copyThrows<NotDirectoryError>("a/file/b", "a", "a/file/b"));
    EXPECT_EQ(std::u16string(), failedPath<PathNotFound>([&] { copy_directory(u"", tree.text("b")); }));
    EXPECT_EQ(std::u16string(), failedPath<PathNotFound>([&] { copy_directory(tree.text("a"), u""); }));
    EXPECT_FALSE(isThere(tree / "b"));
}

TEST_F(CopyDirectory, RefusesAFolderIntoItself) {
    fill("a");
    makeLink("a/inner", tree / "way");
    const test::TreeSnapshot before = snapshot(tree.path());
    for (const char* const to : {"a", "a/", "a/.", "a/inner/..", "a/new", "a/inner", "a/inner/new", "way/new",
                                 "way/empty", "a/inner/empty/new"}) {
        EXPECT_TRUE(copyThrows<InvalidArgument>(to, "a", to));
    }
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(CopyDirectory, TakesASiblingWhoseNameBeginsLikeTheSource) {
    fill("a");
    copy("a", "ab");
    EXPECT_EQ(snapshot(tree / "a"), snapshot(tree / "ab"));
}

TEST_F(CopyDirectory, CopiesAFolderIntoTheOneAroundIt) {
    makeFolder(tree / "b");
    fill("b/a");
    copy("b/a/inner", "b");
    EXPECT_EQ("text", test::contentOf(tree / "b/file"));
}

TEST_F(CopyDirectory, StopsAtItsOwnDestinationInATreeThatIsMountedTwice) {
    if (!test::canMountMirror()) {
        GTEST_SKIP() << "needs the right to mount";
    }
    makeFolder(tree / "a");
    makeFolder(tree / "a/inner");
    makeFolder(tree / "mirror");
    test::runInChild([&] {
        ASSERT_TRUE(test::mountMirror(tree / "a/inner", tree / "mirror"));
        EXPECT_TRUE(copyThrows<InvalidArgument>("a/inner/new", "a", "mirror/new"));
    });
    EXPECT_FALSE(isThere(tree / "a/inner/new/inner/new"));
}

TEST_F(CopyDirectory, RefusesOtherKindsByTheirPath) {
    makeFolder(tree / "a");
    makeFolder(tree / "a/inner");
    test::makePipe(tree / "a/inner/pipe");
    EXPECT_TRUE(copyThrows<InvalidOperation>("a/inner/pipe"));
    EXPECT_FALSE(isThere(tree / "b/inner/pipe"));
}

TEST_F(CopyDirectory, DoesNotWaitForAPipeThatTookAFilesPlace) {
    makeFolder(tree / "a");
    makeFile(tree / "a/file");
    static std::string path;
    path = tree / "a/file";
    ScopedSystemCalls calls;
    calls->openat = [](int folder, const char* name, int flags, mode_t mode) {
        if (name == std::string("file") && (flags & O_CREAT) == 0) {
            ::unlink(path.c_str());
            test::makePipe(path);
            EXPECT_NE(0, flags & O_NONBLOCK);
            flags |= O_NONBLOCK;  // the test does not wait either
        }
        return kHostCalls.openat(folder, name, flags, mode);
    };
    EXPECT_TRUE(copyThrows<InvalidOperation>("a/file"));
}

TEST_F(CopyDirectory, WorksWhereListingsTellNoKinds) {
    fill("a");
    ScopedSystemCalls calls;
    test::hideKinds(calls);
    copy();
    expectSame();
}

TEST_F(CopyDirectory, LosesNothingWhenSignalsInterruptEveryCall) {
    fill("a");
    test::makeChain(tree / "a/inner/empty", "level", 40);
    test::makeSparseFile(tree / "a/sparse", 600'000, 300'000, "island");
    ScopedSystemCalls calls;
    test::interruptCalls<&SystemCalls::openat, &SystemCalls::read, &SystemCalls::write, &SystemCalls::lseek,
                         &SystemCalls::ftruncate, &SystemCalls::fallocate, &SystemCalls::ficlone,
                         &SystemCalls::fstat, &SystemCalls::fstatat, &SystemCalls::getdents64,
                         &SystemCalls::mkdirat, &SystemCalls::symlinkat, &SystemCalls::fchmod>(calls);
    copy();
    expectSame();
}

TEST_F(CopyDirectory, StopsAtTheFirstFailureAndLeavesWhatWasCopied) {
    makeFolder(tree / "a");
    makeFolder(tree / "a/inner");
    for (const char* const name : {"1", "2", "3", "4"}) {
        makeFile(tree / ("a/inner/" + std::string(name)), name);
    }
    ScopedSystemCalls calls;
    test::failCall<&SystemCalls::write>(calls, 3, ENOSPC);
    try {
        copy();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const fl::filesystem::SystemError& failure) {
        EXPECT_EQ(ENOSPC, failure.get_error_code());
        EXPECT_EQ(0U, failure.get_path_name().find(tree.text("b/inner/")));
    }
    EXPECT_EQ(3U, snapshot(tree / "b").size());  // the inner folder and two files, not the third
    EXPECT_EQ(0700U, test::modeOf(tree / "b"));
}

TEST_F(CopyDirectory, NamesAFileThatCannotBeRead) {
    test::runAsOrdinaryUser([] {
        const TempTree own;
        makeFolder(own / "a");
        makeFolder(own / "a/\xC3\xA4");
        makeFile(own / "a/\xC3\xA4/secret", "text", 0);
        const test::NoDescriptorLeft noneInTheChild;
        EXPECT_EQ(own.text(u"a/\u00E4/secret"), failedPath<fl::filesystem::AccessDenied>(
                                                    [&] { copy_directory(own.text("a"), own.text("b")); }));
    });
}

TEST_F(CopyDirectory, OfAFolderThatCannotBeReadFails) {
    fill("a");
    ScopedSystemCalls calls;
    test::failCall<&SystemCalls::getdents64>(calls, 1, EIO);
    EXPECT_TRUE(test::failsWith(EIO, tree.text("a"), [&] { copy(); }));
}

TEST_F(CopyDirectory, SpendsEightCallsOnASmallFile) {
    makeFolder(tree / "a");
    constexpr int kFiles = 50;
    for (int i = 0; i < kFiles; ++i) {
        makeFile(tree / ("a/" + std::to_string(i)), test::someBytes(4096));
    }
    ScopedSystemCalls calls;
    test::countCall<&SystemCalls::openat>(calls);
    test::countCall<&SystemCalls::fstat>(calls);
    test::countCall<&SystemCalls::read>(calls);
    test::countCall<&SystemCalls::write>(calls);
    test::countCall<&SystemCalls::fstatat>(calls);
    test::countCall<&SystemCalls::fchmod>(calls);
    test::countCall<&SystemCalls::ficlone>(calls);
    test::countCall<&SystemCalls::lseek>(calls);
    test::countCall<&SystemCalls::fallocate>(calls);
    test::countCall<&SystemCalls::ftruncate>(calls);
    copy();
    constexpr int kForFolders = 30;  // the two folders and the way up from the destination
    EXPECT_LE(test::callsMade<&SystemCalls::openat>(), 2 * kFiles + kForFolders);
    EXPECT_LE(test::callsMade<&SystemCalls::fstat>(), kFiles + kForFolders);
    EXPECT_EQ(2 * kFiles, test::callsMade<&SystemCalls::read>());
    EXPECT_EQ(kFiles, test::callsMade<&SystemCalls::write>());
    EXPECT_EQ(0, test::callsMade<&SystemCalls::fstatat>());
    EXPECT_EQ(2, test::callsMade<&SystemCalls::fchmod>());  // of the folder, before it is filled and after //
                                                            // of the folder
    EXPECT_LE(test::callsMade<&SystemCalls::ficlone>(), 1);
    EXPECT_EQ(0, test::callsMade<&SystemCalls::lseek>() + test::callsMade<&SystemCalls::fallocate>() +
                     test::callsMade<&SystemCalls::ftruncate>());
}

TEST(CopyDirectoryWithAnOddUmask, CopiesTheWholeTree) {
    for (const mode_t mask : {0777U, 0477U, 0277U, 0177U, 0700U}) {
        test::runAsOrdinaryUser([mask] {
            const TempTree tree;
            makeFolder(tree / "a");
            makeFolder(tree / "a/inner");
            makeFile(tree / "a/inner/file", "text");
            ::umask(mask);
            fl::filesystem::copy_directory(tree.text("a"), tree.text("b"));
            ::umask(022);
            EXPECT_EQ(snapshot(tree / "a"), snapshot(tree / "b")) << mask;
        });
    }
}

}  // namespace
