// Copies of folders with many entries and of deep ones.

#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/CopyDirectoryFixture.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace {

using test::CopyDirectory;
using test::isThere;
using test::makeFile;
using test::makeFolder;
using test::snapshot;

/// Large trees, in memory: a disk without a journal takes very long to make what was just removed.
class CopyLargeDirectory : public CopyDirectory {
protected:
    CopyLargeDirectory() : CopyDirectory(test::fastFolder()) {}
};

TEST_F(CopyLargeDirectory, CopiesAFolderOfManyEntries) {
    makeFolder(tree / "a");
    for (int i = 0; i < 3000; ++i) {
        makeFile(tree / ("a/a rather long name of a file, number " + std::to_string(i)), std::to_string(i));
    }
    copy();
    expectSame();
}

TEST_F(CopyLargeDirectory, WorksAt900LevelsWith256Descriptors) {
    makeFolder(tree / "a");
    test::makeChain(tree / "a", "level", 900);
    test::runInChild([&] {
        test::limitResource(RLIMIT_NOFILE, 256);
        copy();
        fl::filesystem::remove_all(tree.text("b/level"));
        copy("a", "b");
    });
    std::string leaf;
    for (int level = 0; level < 600; ++level) {  // about as deep as one call can look
        leaf += "/level";
    }
    EXPECT_TRUE(isThere(tree / ("b" + leaf)));
}

TEST_F(CopyLargeDirectory, AndRemovingItGiveDescriptorsUpWhereThereAreNoMore) {
    makeFolder(tree / "a");
    test::makeChain(tree / "a", "level", 60);
    makeFile(tree / "a/level/level/zfile", "text");
    test::runInChild([&] {
        test::limitResource(RLIMIT_NOFILE, test::openDescriptors().size() + 8);
        copy();
        EXPECT_EQ(snapshot(tree / "a"), snapshot(tree / "b"));
        test::limitResource(RLIMIT_NOFILE, test::openDescriptors().size() + 4);
        fl::filesystem::remove_all(tree.text("b"));
    });
    EXPECT_FALSE(isThere(tree / "b"));
}

TEST_F(CopyLargeDirectory, WorksAt3000LevelsAndCopiesTheLast) {
    makeFolder(tree / "a");
    test::makeChain(tree / "a", "d", 3000);
    copy();
    int folder = ::open((tree / "b").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level < 3000; ++level) {
        const int inner = ::openat(folder, "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(folder);
        folder = inner;
        ASSERT_GE(folder, 0) << level;
    }
    EXPECT_EQ(0, ::faccessat(folder, "leaf", R_OK, 0));
    ::close(folder);
}

}  // namespace
