// Moves to another file system: what fails on the way, and what is left then.

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/FailedNumber.hpp"
#include "tests/unit/portable/filesystem/RenamedTree.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>

namespace {

using fl::filesystem::InvalidArgument;
using fl::filesystem::posix::kHostCalls;
using test::contentOf;
using test::failedPath;
using test::failsWith;
using test::fill;
using test::isThere;
using test::makeFile;
using test::makeFolder;
using test::makeLink;
using test::ScopedSystemCalls;
using test::snapshot;
using test::SystemCalls;
using test::TempTree;

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

}  // namespace
