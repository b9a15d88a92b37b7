#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace fl::filesystem;
using fl::filesystem::posix::kHostCalls;
using test::failedPath;
using test::ScopedSystemCalls;
using test::TempTree;

bool isFolder(const std::string& path) {
    return test::isThere(path) && S_ISDIR(test::statusOf(path).st_mode);
}

TEST(CreateDirectory, MakesOneFolder) {
    const TempTree tree;
    EXPECT_TRUE(create_directory(tree.text("folder")));
    EXPECT_TRUE(isFolder(tree / "folder"));
    EXPECT_TRUE(create_directory(tree.text("slashed//")));
    EXPECT_TRUE(isFolder(tree / "slashed"));
}

TEST(CreateDirectory, NeverAdoptsWhatIsThere) {
    const TempTree tree;
    test::makeFolder(tree / "folder");
    test::makeFile(tree / "file");
    test::makeLink("folder", tree / "link");
    test::makeLink("nowhere", tree / "dangling");
    for (const char* const name :
         {"folder", "file", "link", "dangling", "dangling/", "folder/.", "folder/.."}) {
        EXPECT_EQ(tree.text(name), failedPath<FileExistsError>([&] { create_directory(tree.text(name)); }));
    }
    EXPECT_FALSE(test::isThere(tree / "nowhere"));
    EXPECT_THROW(create_directory(u"/"), FileExistsError);
}

TEST(CreateDirectory, NeedsAFolderToStandIn) {
    const TempTree tree;
    test::makeFile(tree / "file");
    EXPECT_EQ(tree.text("a/b"), failedPath<PathNotFound>([&] { create_directory(tree.text("a/b")); }));
    EXPECT_THROW(create_directory(tree.text("file/b")), NotDirectoryError);
    EXPECT_THROW(create_directory(u""), PathNotFound);
    EXPECT_THROW(create_directory(std::u16string(u"/tmp/a\0b", 8)), FileNameConversionFailure);
}

TEST(CreateDirectory, TheMaskOfTheProcessTakesPermissions) {
    test::runInChild([] {
        ::umask(0);
        const TempTree tree;
        create_directory(tree.text("open"));
        EXPECT_EQ(0777U, test::modeOf(tree / "open"));
        ::umask(027);
        create_directory(tree.text("closed"));
        create_directories(tree.text("a/b"));
        EXPECT_EQ(0750U, test::modeOf(tree / "closed"));
        EXPECT_EQ(0750U, test::modeOf(tree / "a"));
        EXPECT_EQ(0750U, test::modeOf(tree / "a/b"));
    });
}

TEST(CreateDirectories, MakesWhatIsMissing) {
    const test::NoDescriptorLeft noneLeft;
    const TempTree tree;
    EXPECT_TRUE(create_directories(tree.text("a/b//c/")));
    EXPECT_TRUE(isFolder(tree / "a/b/c"));
    EXPECT_FALSE(create_directories(tree.text("a/b/c")));
    EXPECT_FALSE(create_directories(tree.text("a")));
    EXPECT_TRUE(create_directories(tree.text("a/b/d")));
    EXPECT_FALSE(create_directories(u"/"));
    EXPECT_FALSE(create_directories(u"."));
}

TEST(CreateDirectories, FollowsDots) {
    const TempTree tree;
    EXPECT_TRUE(create_directories(tree.text("a/./b/../c")));
    EXPECT_TRUE(isFolder(tree / "a/b"));
    EXPECT_TRUE(isFolder(tree / "a/c"));
    EXPECT_FALSE(create_directories(tree.text("a/new/..")));
    EXPECT_TRUE(isFolder(tree / "a/new"));
}

TEST(CreateDirectories, TakesALinkToAFolderForAFolder) {
    const TempTree tree;
    test::makeFolder(tree / "real");
    test::makeLink("real", tree / "link");
    EXPECT_FALSE(create_directories(tree.text("link")));
    EXPECT_TRUE(create_directories(tree.text("link/a/b")));
    EXPECT_TRUE(isFolder(tree / "real/a/b"));
}

TEST(CreateDirectories, SomethingElseInTheWayIsNoFolder) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::makeLink("file", tree / "link");
    test::makeLink("nowhere", tree / "dangling");
    test::makePipe(tree / "pipe");
    for (const char* const name : {"file", "link", "dangling", "pipe"}) {
        for (const char* const below : {"", "/a", "/a/b"}) {
            const std::u16string path = tree.text(std::string(name) + below);
            EXPECT_EQ(path, failedPath<NotDirectoryError>([&] { create_directories(path); }));
        }
    }
    EXPECT_FALSE(test::isThere(tree / "nowhere"));
}

TEST(CreateDirectories, EmptyPathIsNotFound) { EXPECT_THROW(create_directories(u""), PathNotFound); }

TEST(CreateDirectories, RelativePathStartsAtTheWorkingDirectory) {
    test::runInChild([] {
        const TempTree tree;
        ASSERT_EQ(0, ::chdir(tree.path().c_str()));
        EXPECT_TRUE(create_directories(u"a/b"));
        EXPECT_TRUE(isFolder(tree / "a/b"));
        EXPECT_TRUE(create_directories(u"single"));
    });
}

TEST(CreateDirectories, WorksBelowFoldersThatCannotBeRead) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        test::makeFolder(tree / "unread", 0300);
        EXPECT_TRUE(create_directories(tree.text("unread/a/b")));
        EXPECT_TRUE(isFolder(tree / "unread/a/b"));
        test::makeFolder(tree / "unwritten", 0500);
        EXPECT_THROW(create_directories(tree.text("unwritten/a/b")), AccessDenied);
        EXPECT_THROW(create_directories(tree.text("unwritten/a")), AccessDenied);
    });
}

TEST(CreateDirectories, ExistingFolderIsFineWhateverTheSystemSaysFirst) {
    const TempTree tree;
    ScopedSystemCalls calls;
    calls->mkdirat = [](int, const char*, mode_t) {
        errno = EROFS;
        return -1;
    };
    EXPECT_FALSE(create_directories(u"/tmp"));
    EXPECT_EQ(EROFS, test::failedNumber([&] { create_directories(tree.text("new")); }));
}

TEST(CreateDirectories, MissingParentIsTheOnlyReasonToWalk) {
    static int opened;
    opened = 0;
    const TempTree tree;
    ScopedSystemCalls calls;
    calls->openat = [](int directory, const char* path, int flags, mode_t mode) {
        ++opened;
        return kHostCalls.openat(directory, path, flags, mode);
    };
    create_directories(tree.text("a"));
    create_directories(tree.text("a"));
    create_directories(tree.text("a/b"));
    EXPECT_EQ(0, opened);
    create_directories(tree.text("x/y"));
    EXPECT_NE(0, opened);
}

TEST(CreateDirectories, ManyAtOnceOnTheSamePath) {
    const test::NoDescriptorLeft noneLeft;
    for (int round = 0; round < 20; ++round) {
        const TempTree tree("/dev/shm");
        const std::u16string path = tree.text("a/b/c/d/e/f");
        std::atomic<int> made{0};
        std::vector<std::thread> creators;
        creators.reserve(4);
        for (int i = 0; i < 4; ++i) creators.emplace_back([&] { made += create_directories(path) ? 1 : 0; });
        for (std::thread& creator : creators) creator.join();
        EXPECT_EQ(1, made);
        EXPECT_TRUE(isFolder(tree / "a/b/c/d/e/f"));
    }
}

TEST(CreateDirectories, SomebodyElseIsFasterByAMoment) {
    const TempTree tree;
    ScopedSystemCalls calls;
    calls->mkdirat = [](int directory, const char* path, mode_t mode) {
        if (kHostCalls.mkdirat(directory, path, mode) == 0) errno = EEXIST;
        return -1;
    };
    EXPECT_FALSE(create_directories(tree.text("a/b")));
    EXPECT_TRUE(isFolder(tree / "a/b"));
}

/// How often making a folder is tried, while somebody else removes it again as soon as it is there.
int triesAgainstARemover(int removals) {
    static int tries;
    static int left;
    tries = 0;
    left = removals;
    const TempTree tree;
    ScopedSystemCalls calls;
    calls->mkdirat = [](int directory, const char* path, mode_t mode) {
        if (std::string_view(path) != "b") return kHostCalls.mkdirat(directory, path, mode);
        ++tries;
        if (left-- <= 0) return kHostCalls.mkdirat(directory, path, mode);
        errno = EEXIST;  // and gone at once
        return -1;
    };
    if (removals < 8) {
        EXPECT_TRUE(create_directories(tree.text("a/b")));
        EXPECT_TRUE(isFolder(tree / "a/b"));
    } else {
        EXPECT_EQ(tree.text("a/b"), failedPath<PathNotFound>([&] { create_directories(tree.text("a/b")); }));
    }
    return tries;
}

TEST(CreateDirectories, FolderThatSomebodyRemovesMeanwhileIsMadeAgain) {
    EXPECT_EQ(2, triesAgainstARemover(1));
    EXPECT_EQ(8, triesAgainstARemover(7));
}

TEST(CreateDirectories, GivesUpOnSomebodyWhoRemovesWithoutEnd) { EXPECT_EQ(8, triesAgainstARemover(1'000)); }

TEST(CreateDirectories, FolderThatGoesBetweenTwoLooksIsMadeAgain) {
    static bool first;
    first = true;
    const TempTree tree;
    ScopedSystemCalls calls;
    calls->mkdirat = [](int directory, const char* path, mode_t mode) {
        if (!std::exchange(first, false)) return kHostCalls.mkdirat(directory, path, mode);
        errno = EEXIST;
        return -1;
    };
    EXPECT_TRUE(create_directories(tree.text("a")));
    EXPECT_TRUE(isFolder(tree / "a"));
}

TEST(CreateDirectories, FoldersMadeBeforeAFailureStay) {
    const TempTree tree;
    EXPECT_THROW(create_directories(tree.text("a/b/" + std::string(256, 'n'))), FileNameTooLarge);
    EXPECT_TRUE(isFolder(tree / "a/b"));
}

}  // namespace
