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
using fl::filesystem::posix::hostCalls;
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

enum class Way { within, across };

/// From one tree to another, within a file system and across two. Where the machine has only one, the
/// system's first refusal is made up.
class Rename : public ::testing::TestWithParam<Way> {
protected:
    Rename() {
        if (GetParam() == Way::across &&
            test::statusOf(from_.path()).st_dev == test::statusOf(to_.path()).st_dev) {
            test::failOneCall<&SystemCalls::renameat>(calls_.emplace(), 1, EXDEV);
        }
    }

    void rename(std::string_view from, std::string_view to) const {
        fl::filesystem::rename(from_.text(from), to_.text(to));
    }

    /// The failure is about the source, and neither side has changed.
    template <typename Failure>
    bool refusesFrom(std::string_view from, std::string_view to) const {
        return refuses<Failure>(from_.text(from), from, to);
    }
    template <typename Failure>
    bool refusesTo(std::string_view from, std::string_view to) const {
        return refuses<Failure>(to_.text(to), from, to);
    }

    TempTree from_{"/tmp"};
    TempTree to_{GetParam() == Way::within ? "/tmp" : "/dev/shm"};
    std::optional<ScopedSystemCalls> calls_;
    test::NoDescriptorLeft noDescriptorLeft_;

private:
    template <typename Failure>
    bool refuses(const std::u16string& about, std::string_view from, std::string_view to) const {
        const test::TreeSnapshot fromBefore = snapshot(from_.path());
        const test::TreeSnapshot toBefore = snapshot(to_.path());
        const bool refused = about == failedPath<Failure>([&] { rename(from, to); });
        return refused && fromBefore == snapshot(from_.path()) && toBefore == snapshot(to_.path());
    }
};

INSTANTIATE_TEST_SUITE_P(FileSystems, Rename, ::testing::Values(Way::within, Way::across),
                         [](const auto& option) {
                             return option.param == Way::within ? "Within" : "Across";
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
    makeFile(from_ / "a", "text", 0640);
    rename("a", "b");
    EXPECT_EQ(test::TreeSnapshot(), snapshot(from_.path()));
    EXPECT_EQ((test::TreeSnapshot{{"b", "file 0640 'text'"}}), snapshot(to_.path()));
}

TEST_P(Rename, MovesALinkItself) {
    makeLink("nowhere", from_ / "a");
    rename("a/", "b");
    EXPECT_EQ(test::TreeSnapshot(), snapshot(from_.path()));
    EXPECT_EQ((test::TreeSnapshot{{"b", "link -> nowhere"}}), snapshot(to_.path()));
}

TEST_P(Rename, MovesATree) {
    fill(from_, "a");
    const test::TreeSnapshot before = snapshot(from_ / "a");
    rename("a", "b/");
    EXPECT_EQ(before, snapshot(to_ / "b"));
    EXPECT_EQ(0750U, test::modeOf(to_ / "b"));
    EXPECT_EQ(test::TreeSnapshot(), snapshot(from_.path()));
}

TEST_P(Rename, CarriesTheTimes) {
    fill(from_, "a");
    const timespec long_ago{1'000'000'000, 123'456'789};
    for (const char* const name : {"a/inner/file", "a/large", "a/dangling", "a/inner", "a"}) {
        test::setModifiedTime(from_ / name, long_ago);
    }
    makeFile(from_ / "file", "text");
    makeLink("nowhere", from_ / "link");
    test::setModifiedTime(from_ / "file", long_ago);
    test::setModifiedTime(from_ / "link", long_ago);
    for (const char* const name : {"a", "file", "link"}) {
        if (calls_) test::ReplacedCall<& SystemCalls::renameat>::made = 0;
        rename(name, name);
    }
    for (const char* const name : {"a", "a/inner", "a/inner/file", "a/large", "a/dangling", "file", "link"}) {
        EXPECT_EQ(long_ago.tv_sec, test::statusOf(to_ / name).st_mtim.tv_sec) << name;
        EXPECT_EQ(long_ago.tv_nsec, test::statusOf(to_ / name).st_mtim.tv_nsec) << name;
    }
}

TEST_P(Rename, ReplacesAFile) {
    makeFile(from_ / "a", "new", 0600);
    makeFile(to_ / "b", "old and longer");
    rename("a", "b");
    EXPECT_EQ((test::TreeSnapshot{{"b", "file 0600 'new'"}}), snapshot(to_.path()));
    EXPECT_FALSE(isThere(from_ / "a"));
}

TEST_P(Rename, ReplacesALinkItself) {
    makeFile(from_ / "a", "new");
    makeFile(to_ / "canary", "old");
    makeLink("canary", to_ / "b");
    rename("a", "b");
    EXPECT_EQ((test::TreeSnapshot{{"b", "file 0644 'new'"}, {"canary", "file 0644 'old'"}}),
              snapshot(to_.path()));
}

TEST_P(Rename, ReplacesAnEmptyFolderByAFolder) {
    fill(from_, "a");
    makeFolder(to_ / "b");
    const test::TreeSnapshot before = snapshot(from_ / "a");
    rename("a", "b");
    EXPECT_EQ(before, snapshot(to_ / "b"));
    EXPECT_FALSE(isThere(from_ / "a"));
}

TEST_P(Rename, RefusesAFolderThatHoldsSomething) {
    fill(from_, "a");
    fill(to_, "b");
    EXPECT_TRUE(refusesTo<DirectoryNotEmpty>("a", "b"));
}

TEST_P(Rename, RefusesAFileOntoAFolderAndTheReverse) {
    fill(from_, "folder");
    makeFile(from_ / "file", "text");
    makeFolder(to_ / "folder");
    makeFile(to_ / "file", "text");
    EXPECT_TRUE(refusesTo<FileIsDirectory>("file", "folder"));
    if (calls_) test::ReplacedCall<& SystemCalls::renameat>::made = 0;
    EXPECT_TRUE(refusesTo<NotDirectoryError>("folder", "file"));
}

TEST_P(Rename, TellsWhichPathIsMissing) {
    makeFile(from_ / "a", "text");
    EXPECT_TRUE(refusesFrom<PathNotFound>("no", "b"));
    if (calls_) test::ReplacedCall<& SystemCalls::renameat>::made = 0;
    EXPECT_TRUE(refusesTo<PathNotFound>("a", "no/b"));
}

TEST_P(Rename, RefusesDots) {
    fill(from_, "a");
    makeFolder(to_ / "b");
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

/// Across file systems, one of which is made up, so that each call can be reached.
class RenameAcross : public ::testing::Test {
protected:
    RenameAcross() { refuseFirstRename(); }

    void refuseFirstRename() { test::failOneCall<&SystemCalls::renameat>(calls_, 1, EXDEV); }

    void rename(std::string_view from, std::string_view to) const {
        fl::filesystem::rename(tree_.text(from), tree_.text(to));
    }

    TempTree tree_;
    ScopedSystemCalls calls_;
    test::NoDescriptorLeft noDescriptorLeft_;
};

TEST_F(RenameAcross, ChangesNothingWhenCopyingFails) {
    fill(tree_, "a");
    makeFolder(tree_ / "b");
    const test::TreeSnapshot before = snapshot(tree_.path());
    test::failCall<&SystemCalls::write>(calls_, 2, ENOSPC);
    EXPECT_THROW(rename("a", "b"), fl::filesystem::SystemError);
    EXPECT_EQ(before, snapshot(tree_.path()));
}

TEST_F(RenameAcross, ChangesNothingWhenTheTimesCannotBeSet) {
    makeFile(tree_ / "a", "new");
    makeFile(tree_ / "b", "old");
    const test::TreeSnapshot before = snapshot(tree_.path());
    test::failCall<&SystemCalls::futimens>(calls_, 1, EIO);
    EXPECT_TRUE(failsWith(EIO, tree_.text("b"), [&] { rename("a", "b"); }));
    EXPECT_EQ(before, snapshot(tree_.path()));
}

TEST_F(RenameAcross, ChangesNothingWhenTheTimesOfALinkCannotBeSet) {
    makeLink("nowhere", tree_ / "a");
    const test::TreeSnapshot before = snapshot(tree_.path());
    test::failCall<&SystemCalls::utimensat>(calls_, 1, EIO);
    EXPECT_TRUE(failsWith(EIO, tree_.text("b"), [&] { rename("a", "b"); }));
    EXPECT_EQ(before, snapshot(tree_.path()));
}

TEST_F(RenameAcross, ChangesNothingWhenTheCopyCannotBePutInPlace) {
    for (const char* const name : {"file", "link", "folder"}) {
        makeFile(tree_ / "file", "text");
        makeLink("nowhere", tree_ / "link");
        fill(tree_, "folder");
        const test::TreeSnapshot before = snapshot(tree_.path());
        calls_->renameat = [](int, const char* from, int, const char*) {
            return errno = std::string_view(from).find(".tmp") == std::string_view::npos ? EXDEV : EIO, -1;
        };
        EXPECT_TRUE(failsWith(EIO, tree_.text("new"), [&] { rename(name, "new"); }));
        EXPECT_EQ(before, snapshot(tree_.path()));
        fl::filesystem::remove_all(tree_.text("folder"));
        ::unlink((tree_ / "link").c_str());
    }
}

TEST_F(RenameAcross, KeepsBothWhenTheSourceCannotBeRemoved) {
    fill(tree_, "a");
    const test::TreeSnapshot before = snapshot(tree_ / "a");
    calls_->unlinkat = [](int folder, const char* name, int flags) {
        return name == std::string_view("file") ? (errno = EBUSY, -1)
                                                : hostCalls.unlinkat(folder, name, flags);
    };
    EXPECT_TRUE(failsWith(EBUSY, tree_.text("a/inner/file"), [&] { rename("a", "b"); }));
    EXPECT_EQ(before, snapshot(tree_ / "b"));
    EXPECT_TRUE(isThere(tree_ / "a/inner/file"));
}

TEST_F(RenameAcross, RefusesOtherKinds) {
    test::makePipe(tree_ / "pipe");
    fill(tree_, "a");
    test::makePipe(tree_ / "a/inner/pipe");
    const test::TreeSnapshot before = snapshot(tree_.path());
    EXPECT_EQ(tree_.text("pipe"), failedPath<fl::filesystem::InvalidOperation>([&] { rename("pipe", "b"); }));
    refuseFirstRename();
    EXPECT_EQ(tree_.text("a/inner/pipe"),
              failedPath<fl::filesystem::InvalidOperation>([&] { rename("a", "b"); }));
    EXPECT_EQ(before, snapshot(tree_.path()));
}

TEST_F(RenameAcross, RefusesAFolderIntoItself) {
    fill(tree_, "a");
    const test::TreeSnapshot before = snapshot(tree_.path());
    EXPECT_EQ(tree_.text("a/inner/b"), failedPath<InvalidArgument>([&] { rename("a", "a/inner/b"); }));
    EXPECT_EQ(before, snapshot(tree_.path()));
}

TEST_F(RenameAcross, TakesNamesOfTheLongestLength) {
    makeFile(tree_ / "a", "text");
    rename("a", std::string(255, 'n'));
    EXPECT_EQ("text", contentOf(tree_ / std::string(255, 'n')));
}

TEST_F(RenameAcross, LosesNothingWhenSignalsInterruptEveryCall) {
    fill(tree_, "a");
    const test::TreeSnapshot before = snapshot(tree_ / "a");
    test::interruptCalls<&SystemCalls::openat, &SystemCalls::read, &SystemCalls::write, &SystemCalls::lseek,
                         &SystemCalls::ftruncate, &SystemCalls::fallocate, &SystemCalls::fstat,
                         &SystemCalls::fstatat, &SystemCalls::getdents64, &SystemCalls::mkdirat,
                         &SystemCalls::symlinkat, &SystemCalls::fchmod, &SystemCalls::futimens,
                         &SystemCalls::unlinkat, &SystemCalls::getrandom>(calls_);
    rename("a", "b");
    EXPECT_EQ(before, snapshot(tree_ / "b"));
    EXPECT_FALSE(isThere(tree_ / "a"));
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
