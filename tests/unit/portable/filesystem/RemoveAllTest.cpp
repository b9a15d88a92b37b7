#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/FailedNumber.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

namespace {

using fl::filesystem::AccessDenied;
using fl::filesystem::remove_all;
using fl::filesystem::posix::kHostCalls;
using test::failedPath;
using test::isThere;
using test::makeFile;
using test::makeFolder;
using test::makeLink;
using test::makePipe;
using test::ScopedSystemCalls;
using test::snapshot;
using test::SystemCalls;
using test::TempTree;

class RemoveAll : public ::testing::Test {
protected:
    explicit RemoveAll(const std::string& parent = "/tmp") : tree(parent) {}

    TempTree tree;
    test::NoDescriptorLeft noDescriptorLeft;
};

/// Large trees, in memory: a disk without a journal takes very long to make what was just removed.
class RemoveLarge : public RemoveAll {
protected:
    RemoveLarge() : RemoveAll(test::fastFolder()) {}
};

void fillTree(const TempTree& tree, const std::string& top) {
    makeFolder(tree / top);
    makeFolder(tree / (top + "/inner"));
    makeFolder(tree / (top + "/inner/empty"));
    makeFile(tree / (top + "/inner/file"), "text");
    makeFile(tree / (top + "/file"), "text", 0);
    makePipe(tree / (top + "/pipe"));
    makeLink("nowhere", tree / (top + "/dangling"));
}

TEST_F(RemoveAll, RemovesAFileALinkAndAPipe) {
    makeFile(tree / "file");
    makeLink("nowhere", tree / "link");
    makePipe(tree / "pipe");
    for (const char* const name : {"file", "link", "pipe"}) {
        remove_all(tree.text(name));
        EXPECT_FALSE(isThere(tree / name)) << name;
    }
}

TEST_F(RemoveAll, RemovesAWholeTree) {
    fillTree(tree, "top");
    remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RemoveAll, TakesATrailingSeparator) {
    fillTree(tree, "top");
    remove_all(tree.text("top//"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RemoveAll, RemovesALinkAndNotWhatItPointsTo) {
    fillTree(tree, "canary");
    const test::TreeSnapshot before = snapshot(tree.path());
    for (const char* const path : {"link", "link/", "link//"}) {
        makeLink("canary", tree / "link");
        remove_all(tree.text(path));
        EXPECT_EQ(before, snapshot(tree.path())) << path;
    }
    makeFolder(tree / "top");
    makeLink("../canary", tree / "top/link");
    remove_all(tree.text("top"));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(RemoveAll, OfAMissingPathFails) {
    makeFile(tree / "file");
    EXPECT_EQ(std::u16string(), failedPath<fl::filesystem::PathNotFound>([] { remove_all(u""); }));
    EXPECT_EQ(tree.text("no"),
              failedPath<fl::filesystem::PathNotFound>([&] { remove_all(tree.text("no")); }));
    EXPECT_EQ(tree.text("no/no"),
              failedPath<fl::filesystem::PathNotFound>([&] { remove_all(tree.text("no/no")); }));
    EXPECT_EQ(tree.text("file/no"),
              failedPath<fl::filesystem::NotDirectoryError>([&] { remove_all(tree.text("file/no")); }));
}

TEST_F(RemoveAll, RefusesDotsBeforeAnythingIsRemoved) {
    fillTree(tree, "top");
    const test::TreeSnapshot before = snapshot(tree.path());
    for (const char* const path : {"top/.", "top/..", "top/inner/..", "top/./", "top/..//"}) {
        EXPECT_EQ(tree.text(path),
                  failedPath<fl::filesystem::InvalidArgument>([&] { remove_all(tree.text(path)); }));
    }
    test::runInChild([&] {
        ASSERT_EQ(0, ::chdir((tree / "top/inner").c_str()));
        EXPECT_EQ(u".", failedPath<fl::filesystem::InvalidArgument>([] { remove_all(u"."); }));
        EXPECT_EQ(u"..", failedPath<fl::filesystem::InvalidArgument>([] { remove_all(u".."); }));
    });
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(RemoveAll, RefusesTheRoot) {
    ScopedSystemCalls calls;  // should the refusal fail, nothing may happen to this machine
    test::failCall<&SystemCalls::openat>(calls, 1, EROFS);
    test::failCall<&SystemCalls::unlinkat>(calls, 1, EROFS);
    for (const char16_t* const root : {u"/", u"//", u"///"}) {
        EXPECT_EQ(std::u16string(root),
                  failedPath<fl::filesystem::InvalidArgument>([&] { remove_all(root); }));
    }
}

TEST_F(RemoveAll, RemovesNamesOfEveryKind) {
    makeFolder(tree / "top");
    for (const char* const name : {"...", " ", "-rf", "*", "\n", "\xFF\xFE", "\\", "a:b", ".hidden"}) {
        makeFile(tree / ("top/" + std::string(name)));
    }
    makeFile(tree / ("top/" + std::string(255, 'n')));
    remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RemoveLarge, RemovesAFolderOfManyEntries) {
    makeFolder(tree / "top");
    for (int i = 0; i < 5000; ++i) {
        makeFile(tree / ("top/a rather long name of a file, number " + std::to_string(i)));
    }
    remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RemoveAll, WorksWhereListingsTellNoKinds) {
    fillTree(tree, "top");
    ScopedSystemCalls calls;
    test::hideKinds(calls);
    remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RemoveLarge, WorksAt900LevelsWith256Descriptors) {
    makeFolder(tree / "top");
    test::makeChain(tree / "top", "level", 900);
    test::runInChild([&] {
        test::limitResource(RLIMIT_NOFILE, 256);
        remove_all(tree.text("top"));
    });
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RemoveLarge, WorksAt3000Levels) {
    makeFolder(tree / "top");
    test::makeChain(tree / "top", "level", 3000);
    remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RemoveAll, LosesNothingWhenSignalsInterruptEveryCall) {
    fillTree(tree, "top");
    test::makeChain(tree / "top", "level", 40);
    ScopedSystemCalls calls;
    test::interruptCalls<&SystemCalls::openat, &SystemCalls::fstat, &SystemCalls::getdents64,
                         &SystemCalls::unlinkat>(calls);
    remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RemoveAll, GoesOnAfterAFailureAndThrowsTheFirst) {
    fillTree(tree, "top");
    makeFile(tree / "top/inner/locked");
    ScopedSystemCalls calls;
    calls->unlinkat = [](int folder, const char* name, int flags) {
        return name == std::string_view("locked") ? (errno = EBUSY, -1)
                                                  : kHostCalls.unlinkat(folder, name, flags);
    };
    EXPECT_TRUE(test::failsWith(EBUSY, tree.text("top/inner/locked"), [&] { remove_all(tree.text("top")); }));
    EXPECT_EQ(
        (test::TreeSnapshot{
            {"top", "folder 0755"}, {"top/inner", "folder 0755"}, {"top/inner/locked", "file 0644 ''"}}),
        snapshot(tree.path()));
}

TEST_F(RemoveAll, OfAFolderThatCannotBeReadFails) {
    fillTree(tree, "top");
    ScopedSystemCalls calls;
    test::failCall<&SystemCalls::getdents64>(calls, 1, EIO);
    EXPECT_TRUE(test::failsWith(EIO, tree.text("top"), [&] { remove_all(tree.text("top")); }));
    EXPECT_TRUE(isThere(tree / "top/inner/file"));
}

TEST_F(RemoveAll, ReadsAFolderAgainThatFilledUpMeanwhile) {
    fillTree(tree, "top");
    static std::string path;
    static int additions = 0;
    path = tree / "top/inner";
    additions = 3;
    ScopedSystemCalls calls;
    calls->unlinkat = [](int folder, const char* name, int flags) {
        if (flags == AT_REMOVEDIR && name == std::string_view("inner") && additions-- > 0) {
            makeFile(path + "/late");
        }
        return kHostCalls.unlinkat(folder, name, flags);
    };
    remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RemoveAll, GivesUpOnAFolderThatStaysFull) {
    fillTree(tree, "top");
    ScopedSystemCalls calls;
    calls->unlinkat = [](int folder, const char* name, int flags) {
        return name == std::string_view("inner") ? (errno = ENOTEMPTY, -1)
                                                 : kHostCalls.unlinkat(folder, name, flags);
    };
    EXPECT_EQ(tree.text("top/inner"),
              failedPath<fl::filesystem::DirectoryNotEmpty>([&] { remove_all(tree.text("top")); }));
    EXPECT_EQ((test::TreeSnapshot{{"top", "folder 0755"}, {"top/inner", "folder 0755"}}),
              snapshot(tree.path()));
}

TEST_F(RemoveAll, RemovesAFileThatTookTheFoldersPlace) {
    fillTree(tree, "top");
    static std::string path;
    path = tree / "top/inner";
    ScopedSystemCalls calls;
    calls->openat = [](int folder, const char* name, int flags, mode_t mode) {
        if (name == std::string_view("inner")) {
            EXPECT_EQ(0, ::rename(path.c_str(), (path + "-moved").c_str()));
            makeFile(path);
        }
        return kHostCalls.openat(folder, name, flags, mode);
    };
    remove_all(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(RemoveAll, LinkPutInPlaceOfAFolderOnTheWayLeadsNowhere) {
    static std::string top;
    top = tree.path();
    makeFolder(tree / "way");
    makeFolder(tree / "way/top");
    makeFile(tree / "way/top/file");
    makeFolder(tree / "elsewhere");
    makeFile(tree / "elsewhere/top", "a stranger's");
    test::ScopedSystemCalls calls;
    calls->unlinkat = [](int folder, const char* name, int flags) {
        if (::rename((top + "/way").c_str(), (top + "/moved").c_str()) == 0) {
            EXPECT_EQ(0, ::symlink("elsewhere", (top + "/way").c_str()));
        }
        return kHostCalls.unlinkat(folder, name, flags);
    };
    fl::filesystem::remove_all(tree.text("way/top"));
    EXPECT_EQ("a stranger's", test::contentOf(tree / "elsewhere/top"));
    EXPECT_FALSE(test::isThere(tree / "moved/top"));
}

TEST_F(RemoveAll, DoesNotFollowAFolderThatWasMovedAway) {
    makeFolder(tree / "top");
    makeFolder(tree / "elsewhere");
    makeFile(tree / "elsewhere/canary");
    test::makeChain(tree / "top", "level", 40);
    static TempTree* watched = nullptr;
    watched = &tree;
    ScopedSystemCalls calls;
    calls->unlinkat = [](int folder, const char* name, int flags) {
        if (name == std::string_view("leaf")) {  // all the way down: move the second folder out of the tree
            EXPECT_EQ(
                0, ::rename((*watched / "top/level/level").c_str(), (*watched / "elsewhere/level").c_str()));
        }
        return kHostCalls.unlinkat(folder, name, flags);
    };
    EXPECT_TRUE(test::failsWith(ESTALE, tree.text("top/level/level"), [&] { remove_all(tree.text("top")); }));
    EXPECT_TRUE(isThere(tree / "elsewhere/canary"));
}

/// As a user whom permissions stop; root passes them all.
class RemoveAllWithoutRights : public ::testing::Test {};

TEST_F(RemoveAllWithoutRights, SkipsAndReportsFoldersThatCannotBeOpened) {
    for (const mode_t bits : {0000U, 0300U, 0600U, 0500U}) {
        test::runAsOrdinaryUser([&] {
            const TempTree tree;
            makeFolder(tree / "top");
            makeFile(tree / "top/a");
            makeFolder(tree / "top/locked");
            makeFile(tree / "top/locked/file");
            makeFile(tree / "top/z");
            test::setMode(tree / "top/locked", bits);
            const char* const about = (bits & 0400U) != 0 ? "top/locked/file" : "top/locked";
            EXPECT_EQ(tree.text(about), failedPath<AccessDenied>([&] { remove_all(tree.text("top")); }));
            test::setMode(tree / "top/locked", 0700);
            EXPECT_EQ((test::TreeSnapshot{{"top", "folder 0755"},
                                          {"top/locked", "folder 0700"},
                                          {"top/locked/file", "file 0644 ''"}}),
                      snapshot(tree.path()));
        });
    }
}

TEST_F(RemoveAllWithoutRights, RemovesAnEmptyFolderThatCannotBeOpened) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        makeFolder(tree / "top");
        makeFolder(tree / "top/locked", 0);
        makeFolder(tree / "alone", 0);
        remove_all(tree.text("top"));
        remove_all(tree.text("alone"));
        EXPECT_EQ(test::TreeSnapshot(), snapshot(tree.path()));
    });
}

TEST_F(RemoveAllWithoutRights, EmptiesAFolderThatMustStayItself) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        makeFolder(tree / "around");
        fillTree(tree, "around/top");
        test::setMode(tree / "around", 0555);
        EXPECT_EQ(tree.text("around/top"),
                  failedPath<AccessDenied>([&] { remove_all(tree.text("around/top")); }));
        EXPECT_EQ((test::TreeSnapshot{{"around", "folder 0555"}, {"around/top", "folder 0755"}}),
                  snapshot(tree.path()));
    });
}

TEST_F(RemoveAllWithoutRights, LeavesAFileThatMustStay) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        makeFolder(tree / "around");
        makeFile(tree / "around/file");
        test::setMode(tree / "around", 0555);
        EXPECT_EQ(tree.text("around/file"),
                  failedPath<AccessDenied>([&] { remove_all(tree.text("around/file")); }));
    });
}

}  // namespace
