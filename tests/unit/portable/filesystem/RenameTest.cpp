#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/FailedNumber.hpp"
#include "tests/unit/portable/filesystem/MirrorMount.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <string_view>

namespace {

using fl::filesystem::DirectoryNotEmpty;
using fl::filesystem::FileIsDirectory;
using fl::filesystem::InvalidArgument;
using fl::filesystem::NotDirectoryError;
using fl::filesystem::PathNotFound;
using fl::filesystem::posix::kHostCalls;
using test::contentOf;
using test::failedPath;
using test::failsWith;
using test::isThere;
using test::makeFile;
using test::makeFolder;
using test::makeLink;
using test::ScopedSystemCalls;
using test::snapshot;
using test::SystemCalls;
using test::TempTree;

enum class Way { Within, Across };

/// From one tree to another, within a file system and across two. Where the machine has only one, the
/// system's first refusal is made up.
class Rename : public ::testing::TestWithParam<Way> {
protected:
    Rename() {
        if (GetParam() == Way::Across &&
            test::statusOf(fromTree.path()).st_dev == test::statusOf(toTree.path()).st_dev) {
            test::failOneCall<&SystemCalls::renameat>(calls.emplace(), 1, EXDEV);
        }
    }

    void rename(std::string_view from, std::string_view to) const {
        fl::filesystem::rename(fromTree.text(from), toTree.text(to));
    }

    /// The failure is about the source, and neither side has changed.
    template <typename Failure>
    bool refusesFrom(std::string_view from, std::string_view to) const {
        return refuses<Failure>(fromTree.text(from), from, to);
    }
    template <typename Failure>
    bool refusesTo(std::string_view from, std::string_view to) const {
        return refuses<Failure>(toTree.text(to), from, to);
    }

    TempTree fromTree{"/tmp"};
    TempTree toTree{GetParam() == Way::Within ? "/tmp" : "/dev/shm"};
    std::optional<ScopedSystemCalls> calls;
    test::NoDescriptorLeft noDescriptorLeft;

private:
    template <typename Failure>
    bool refuses(const std::u16string& about, std::string_view from, std::string_view to) const {
        const test::TreeSnapshot fromBefore = snapshot(fromTree.path());
        const test::TreeSnapshot toBefore = snapshot(toTree.path());
        const bool refused = about == failedPath<Failure>([&] { rename(from, to); });
        return refused && fromBefore == snapshot(fromTree.path()) && toBefore == snapshot(toTree.path());
    }
};

INSTANTIATE_TEST_SUITE_P(FileSystems, Rename, ::testing::Values(Way::Within, Way::Across),
                         [](const auto& option) {
                             return option.param == Way::Within ? "Within" : "Across";
                         });

void fill(const TempTree& tree, const std::string& top) {
    makeFolder(tree / top, 0750);
    makeFolder(tree / (top + "/inner"));
    makeFile(tree / (top + "/inner/file"), "text", 0640);
    makeFile(tree / (top + "/large"), test::someBytes(700'000), 0444);
    makeLink("nowhere", tree / (top + "/dangling"));
    test::setMode(tree / (top + "/inner"), 0711);
}

TEST_P(Rename, MovesAFile) {
    makeFile(fromTree / "a", "text", 0640);
    rename("a", "b");
    EXPECT_EQ(test::TreeSnapshot(), snapshot(fromTree.path()));
    EXPECT_EQ((test::TreeSnapshot{{"b", "file 0640 'text'"}}), snapshot(toTree.path()));
}

TEST_P(Rename, MovesALinkItself) {
    makeLink("nowhere", fromTree / "a");
    rename("a/", "b");
    EXPECT_EQ(test::TreeSnapshot(), snapshot(fromTree.path()));
    EXPECT_EQ((test::TreeSnapshot{{"b", "link -> nowhere"}}), snapshot(toTree.path()));
}

TEST_P(Rename, MovesATree) {
    fill(fromTree, "a");
    const test::TreeSnapshot before = snapshot(fromTree / "a");
    rename("a", "b/");
    EXPECT_EQ(before, snapshot(toTree / "b"));
    EXPECT_EQ(0750U, test::modeOf(toTree / "b"));
    EXPECT_EQ(test::TreeSnapshot(), snapshot(fromTree.path()));
}

TEST_P(Rename, CarriesTheTimes) {
    fill(fromTree, "a");
    const timespec longAgo{1'000'000'000, 123'456'789};
    for (const char* const name : {"a/inner/file", "a/large", "a/dangling", "a/inner", "a"}) {
        test::setModifiedTime(fromTree / name, longAgo);
    }
    makeFile(fromTree / "file", "text");
    makeLink("nowhere", fromTree / "link");
    test::setModifiedTime(fromTree / "file", longAgo);
    test::setModifiedTime(fromTree / "link", longAgo);
    for (const char* const name : {"a", "file", "link"}) {
        if (calls) test::ReplacedCall<& SystemCalls::renameat>::made = 0;
        rename(name, name);
    }
    for (const char* const name : {"a", "a/inner", "a/inner/file", "a/large", "a/dangling", "file", "link"}) {
        EXPECT_EQ(longAgo.tv_sec, test::statusOf(toTree / name).st_mtim.tv_sec) << name;
        EXPECT_EQ(longAgo.tv_nsec, test::statusOf(toTree / name).st_mtim.tv_nsec) << name;
    }
}

TEST_P(Rename, ReplacesAFile) {
    makeFile(fromTree / "a", "new", 0600);
    makeFile(toTree / "b", "old and longer");
    rename("a", "b");
    EXPECT_EQ((test::TreeSnapshot{{"b", "file 0600 'new'"}}), snapshot(toTree.path()));
    EXPECT_FALSE(isThere(fromTree / "a"));
}

TEST_P(Rename, ReplacesALinkItself) {
    makeFile(fromTree / "a", "new");
    makeFile(toTree / "canary", "old");
    makeLink("canary", toTree / "b");
    rename("a", "b");
    EXPECT_EQ((test::TreeSnapshot{{"b", "file 0644 'new'"}, {"canary", "file 0644 'old'"}}),
              snapshot(toTree.path()));
}

TEST_P(Rename, ReplacesAnEmptyFolderByAFolder) {
    fill(fromTree, "a");
    makeFolder(toTree / "b");
    const test::TreeSnapshot before = snapshot(fromTree / "a");
    rename("a", "b");
    EXPECT_EQ(before, snapshot(toTree / "b"));
    EXPECT_FALSE(isThere(fromTree / "a"));
}

TEST_P(Rename, RefusesAFolderThatHoldsSomething) {
    fill(fromTree, "a");
    fill(toTree, "b");
    EXPECT_TRUE(refusesTo<DirectoryNotEmpty>("a", "b"));
}

TEST_P(Rename, RefusesAFileOntoAFolderAndTheReverse) {
    fill(fromTree, "folder");
    makeFile(fromTree / "file", "text");
    makeFolder(toTree / "folder");
    makeFile(toTree / "file", "text");
    EXPECT_TRUE(refusesTo<FileIsDirectory>("file", "folder"));
    if (calls) test::ReplacedCall<& SystemCalls::renameat>::made = 0;
    EXPECT_TRUE(refusesTo<NotDirectoryError>("folder", "file"));
}

TEST_P(Rename, TellsWhichPathIsMissing) {
    makeFile(fromTree / "a", "text");
    EXPECT_TRUE(refusesFrom<PathNotFound>("no", "b"));
    if (calls) test::ReplacedCall<& SystemCalls::renameat>::made = 0;
    EXPECT_TRUE(refusesTo<PathNotFound>("a", "no/b"));
}

TEST_P(Rename, RefusesDots) {
    fill(fromTree, "a");
    makeFolder(toTree / "b");
    EXPECT_TRUE(refusesFrom<InvalidArgument>("a/.", "c"));
    EXPECT_TRUE(refusesFrom<InvalidArgument>("a/inner/..", "c"));
    EXPECT_TRUE(refusesTo<InvalidArgument>("a", "b/."));
    EXPECT_TRUE(refusesTo<InvalidArgument>("a", "b/.."));
}

TEST(RenameWithin, RefusesAFolderIntoItself) {
    const TempTree tree;
    fill(tree, "a");
    EXPECT_EQ(tree.text("a/inner/b"), failedPath<InvalidArgument>([&] {
                  fl::filesystem::rename(tree.text("a"), tree.text("a/inner/b"));
              }));
}

TEST(RenameWithin, TakesEmptyPathsForMissing) {
    const TempTree tree;
    makeFile(tree / "a");
    EXPECT_EQ(std::u16string(),
              failedPath<PathNotFound>([&] { fl::filesystem::rename(u"", tree.text("b")); }));
    EXPECT_EQ(std::u16string(),
              failedPath<PathNotFound>([&] { fl::filesystem::rename(tree.text("a"), u""); }));
}

int calledForUp;

/// Across file systems, one of which is made up, so that each call can be reached.
class RenameAcross : public ::testing::Test {
protected:
    RenameAcross() { refuseFirstRename(); }

    void refuseFirstRename() { test::failOneCall<&SystemCalls::renameat>(calls, 1, EXDEV); }

    void rename(std::string_view from, std::string_view to) const {
        fl::filesystem::rename(tree.text(from), tree.text(to));
    }

    TempTree tree;
    ScopedSystemCalls calls;
    test::NoDescriptorLeft noDescriptorLeft;
};

TEST_F(RenameAcross, ChangesNothingWhenCopyingFails) {
    fill(tree, "a");
    makeFolder(tree / "b");
    const test::TreeSnapshot before = snapshot(tree.path());
    test::failCall<&SystemCalls::write>(calls, 2, ENOSPC);
    EXPECT_THROW(rename("a", "b"), fl::filesystem::SystemError);
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(RenameAcross, ChangesNothingWhenTheTimesCannotBeSet) {
    makeFile(tree / "a", "new");
    makeFile(tree / "b", "old");
    const test::TreeSnapshot before = snapshot(tree.path());
    test::failCall<&SystemCalls::futimens>(calls, 1, EIO);
    EXPECT_TRUE(failsWith(EIO, tree.text("b"), [&] { rename("a", "b"); }));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(RenameAcross, ChangesNothingWhenTheTimesOfALinkCannotBeSet) {
    makeLink("nowhere", tree / "a");
    const test::TreeSnapshot before = snapshot(tree.path());
    test::failCall<&SystemCalls::utimensat>(calls, 1, EIO);
    EXPECT_TRUE(failsWith(EIO, tree.text("b"), [&] { rename("a", "b"); }));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(RenameAcross, ChangesNothingWhenTheCopyCannotBePutInPlace) {
    for (const char* const name : {"file", "link", "folder"}) {
        makeFile(tree / "file", "text");
        makeLink("nowhere", tree / "link");
        fill(tree, "folder");
        const test::TreeSnapshot before = snapshot(tree.path());
        calls->renameat = [](int, const char* from, int, const char*) {
            return errno = std::string_view(from).find(".tmp") == std::string_view::npos ? EXDEV : EIO, -1;
        };
        EXPECT_TRUE(failsWith(EIO, tree.text("new"), [&] { rename(name, "new"); }));
        EXPECT_EQ(before, snapshot(tree.path()));
        fl::filesystem::remove_all(tree.text("folder"));
        ::unlink((tree / "link").c_str());
    }
}

TEST_F(RenameAcross, LeavesNothingOfACopyWithFoldersThatMayNotBeWritten) {
    test::runAsOrdinaryUser([] {
        const TempTree own;
        makeFolder(own / "a");
        makeFolder(own / "a/0");
        makeFile(own / "a/0/file", "text");
        makeFolder(own / "a/0/closed");
        test::setMode(own / "a/0/closed", 0500);
        test::setMode(own / "a/0", 0555);
        ScopedSystemCalls table;
        test::failOneCall<&SystemCalls::renameat>(table, 1, EXDEV);
        table->syncfs = kHostCalls.syncfs;
        calledForUp = 0;
        table->fchmod = [](int file, mode_t bits) {
            // The last folder that is completed is the top one, and that fails.
            return bits == 0755 && ++calledForUp == 1 ? (errno = EIO, -1) : kHostCalls.fchmod(file, bits);
        };
        const test::TreeSnapshot before = snapshot(own.path());
        EXPECT_THROW(fl::filesystem::rename(own.text("a"), own.text("b")), fl::filesystem::SystemError);
        EXPECT_EQ(before, snapshot(own.path()));
        test::setMode(own / "a/0", 0755);
        test::setMode(own / "a/0/closed", 0755);
    });
}

TEST_F(RenameAcross, SurvivesARemainThatCannotBeRemoved) {
    fill(tree, "a");
    test::failCall<&SystemCalls::write>(calls, 2, ENOSPC);
    calls->unlinkat = [](int folder, const char* name, int flags) {
        return name == std::string_view("file") ? (errno = EBUSY, -1)
                                                : kHostCalls.unlinkat(folder, name, flags);
    };
    EXPECT_TRUE(failsWith(ENOSPC, tree.text("b/large"), [&] { rename("a", "b"); }));
    EXPECT_EQ("text", contentOf(tree / "a/inner/file"));
}

TEST_F(RenameAcross, KeepsAFileThatWasWrittenToMeanwhile) {
    static std::string path;
    path = tree / "a";
    makeFile(path, "old");
    calls->syncfs = [](int folder) {
        makeFile(path, "newer");
        return kHostCalls.syncfs(folder);
    };
    EXPECT_TRUE(failsWith(EBUSY, tree.text("a"), [&] { rename("a", "b"); }));
    EXPECT_EQ("newer", contentOf(tree / "a"));
    EXPECT_EQ("old", contentOf(tree / "b"));
}

TEST_F(RenameAcross, KeepsAnItemThatTookTheSourcesPlace) {
    static std::string path;
    path = tree / "a";
    makeFile(path, "old");
    makeFile(tree / "other", "other");
    calls->syncfs = [](int folder) {
        ::rename((path.substr(0, path.size() - 1) + "other").c_str(), path.c_str());
        return kHostCalls.syncfs(folder);
    };
    EXPECT_TRUE(failsWith(ESTALE, tree.text("a"), [&] { rename("a", "b"); }));
    EXPECT_EQ("other", contentOf(tree / "a"));
}

TEST_F(RenameAcross, KeepsBothWhenTheCopyCannotBeBroughtToTheDisk) {
    fill(tree, "a");
    const test::TreeSnapshot before = snapshot(tree / "a");
    test::failCall<&SystemCalls::syncfs>(calls, 1, EIO);
    EXPECT_TRUE(failsWith(EIO, tree.text("b"), [&] { rename("a", "b"); }));
    EXPECT_EQ(before, snapshot(tree / "a"));
    EXPECT_EQ(before, snapshot(tree / "b"));
}

TEST_F(RenameAcross, RemovesNothingBeforeTheCopyIsOnTheDisk) {
    static bool synced = false;
    synced = false;
    makeFile(tree / "a", "text");
    calls->syncfs = [](int folder) {
        synced = true;
        return kHostCalls.syncfs(folder);
    };
    calls->unlinkat = [](int folder, const char* name, int flags) {
        EXPECT_TRUE(synced);
        return kHostCalls.unlinkat(folder, name, flags);
    };
    rename("a", "b");
    EXPECT_EQ("text", contentOf(tree / "b"));
    EXPECT_TRUE(synced);
}

TEST_F(RenameAcross, SyncsAllWhereTheFolderCannotBeRead) {
    static bool synced = false;
    synced = false;
    makeFile(tree / "a", "text");
    calls->sync = [] { synced = true; };
    calls->openat = [](int folder, const char* name, int flags, mode_t mode) {
        return name == std::string_view(".") && (flags & O_PATH) == 0
                   ? (errno = EACCES, -1)
                   : kHostCalls.openat(folder, name, flags, mode);
    };
    rename("a", "b");
    EXPECT_TRUE(synced);
    EXPECT_FALSE(isThere(tree / "a"));
}

TEST_F(RenameAcross, KeepsBothWhenTheSourceCannotBeRemoved) {
    fill(tree, "a");
    const test::TreeSnapshot before = snapshot(tree / "a");
    calls->unlinkat = [](int folder, const char* name, int flags) {
        return name == std::string_view("file") ? (errno = EBUSY, -1)
                                                : kHostCalls.unlinkat(folder, name, flags);
    };
    EXPECT_TRUE(failsWith(EBUSY, tree.text("a/inner/file"), [&] { rename("a", "b"); }));
    EXPECT_EQ(before, snapshot(tree / "b"));
    EXPECT_TRUE(isThere(tree / "a/inner/file"));
}

TEST_F(RenameAcross, RefusesOtherKinds) {
    test::makePipe(tree / "pipe");
    fill(tree, "a");
    test::makePipe(tree / "a/inner/pipe");
    const test::TreeSnapshot before = snapshot(tree.path());
    EXPECT_EQ(tree.text("pipe"), failedPath<fl::filesystem::InvalidOperation>([&] { rename("pipe", "b"); }));
    refuseFirstRename();
    EXPECT_EQ(tree.text("a/inner/pipe"),
              failedPath<fl::filesystem::InvalidOperation>([&] { rename("a", "b"); }));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(RenameAcross, RefusesAFolderIntoItself) {
    fill(tree, "a");
    const test::TreeSnapshot before = snapshot(tree.path());
    EXPECT_EQ(tree.text("a/inner/b"), failedPath<InvalidArgument>([&] { rename("a", "a/inner/b"); }));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(RenameAcross, TakesNamesOfTheLongestLength) {
    makeFile(tree / "a", "text");
    rename("a", std::string(255, 'n'));
    EXPECT_EQ("text", contentOf(tree / std::string(255, 'n')));
}

TEST_F(RenameAcross, LosesNothingWhenSignalsInterruptEveryCall) {
    fill(tree, "a");
    const test::TreeSnapshot before = snapshot(tree / "a");
    test::interruptCalls<&SystemCalls::openat, &SystemCalls::read, &SystemCalls::write, &SystemCalls::lseek,
                         &SystemCalls::ftruncate, &SystemCalls::fallocate, &SystemCalls::fstat,
                         &SystemCalls::fstatat, &SystemCalls::getdents64, &SystemCalls::mkdirat,
                         &SystemCalls::symlinkat, &SystemCalls::fchmod, &SystemCalls::futimens,
                         &SystemCalls::unlinkat, &SystemCalls::getrandom>(calls);
    rename("a", "b");
    EXPECT_EQ(before, snapshot(tree / "b"));
    EXPECT_FALSE(isThere(tree / "a"));
}

TEST(RenameOfOneItemMountedTwice, LeavesItAlone) {
    if (!test::canMountMirror()) {
        GTEST_SKIP() << "needs the right to mount";
    }
    const TempTree tree;
    makeFolder(tree / "a");
    makeFile(tree / "a/file", "text");
    fill(tree, "a/folder");
    makeFolder(tree / "mirror");
    const test::TreeSnapshot before = snapshot(tree.path());
    test::runInChild([&] {
        ASSERT_TRUE(test::mountMirror(tree / "a", tree / "mirror"));
        fl::filesystem::rename(tree.text("a/file"), tree.text("mirror/file"));
        fl::filesystem::rename(tree.text("a/folder"), tree.text("mirror/folder"));
        EXPECT_EQ(tree.text("mirror/folder/new"), failedPath<InvalidArgument>([&] {
                      fl::filesystem::rename(tree.text("a/folder"), tree.text("mirror/folder/new"));
                  }));
    });
    EXPECT_EQ(before, snapshot(tree.path()));
}

}  // namespace
