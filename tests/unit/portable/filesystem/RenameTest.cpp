#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"
#include "tests/unit/portable/filesystem/MirrorMount.hpp"
#include "tests/unit/portable/filesystem/RenamedTree.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <optional>
#include <string_view>

namespace {

using fl::filesystem::DirectoryNotEmpty;
using fl::filesystem::FileIsDirectory;
using fl::filesystem::InvalidArgument;
using fl::filesystem::NotDirectoryError;
using fl::filesystem::PathNotFound;
using test::failedPath;
using test::fill;
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
