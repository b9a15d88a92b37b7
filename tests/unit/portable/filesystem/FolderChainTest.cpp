#include <pkgcore/portable/filesystem/FolderChain.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

using fl::filesystem::posix::FileDescriptor;
using fl::filesystem::posix::FolderChain;

constexpr std::size_t kDeep = 3 * FolderChain::kMaxOpen;

FileDescriptor openFolder(int parent, const char* name) {
    return FileDescriptor(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

ino_t inodeOf(int folder) {
    struct stat status {};
    EXPECT_EQ(0, ::fstat(folder, &status));
    return status.st_ino;
}

/// A chain that goes down into folders called "d", kDeep of them with the root.
class DeepChain : public ::testing::Test {
protected:
    DeepChain() {
        test::makeChain(tree.path(), "d", kDeep - 1);
        while (chain.depth() < kDeep) {
            inodes.push_back(inodeOf(chain.innermost()));
            EXPECT_EQ(0, chain.push(openFolder(chain.innermost(), "d")));
        }
    }

    test::TempTree tree{test::fastFolder()};
    std::size_t openBefore = test::openDescriptors().size();
    FolderChain chain{openFolder(AT_FDCWD, tree.path().c_str())};
    std::vector<ino_t> inodes;
};

TEST_F(DeepChain, HoldsFewDescriptors) {
    EXPECT_EQ(openBefore + FolderChain::kMaxOpen, test::openDescriptors().size());
    EXPECT_TRUE(chain.isFull());
    EXPECT_EQ(kDeep - FolderChain::kMaxOpen, chain.outermostOpen());
}

TEST_F(DeepChain, FindsTheWayBack) {
    while (chain.depth() > 1) {
        ASSERT_EQ(0, chain.openParent());
        ASSERT_EQ(inodes.back(), inodeOf(chain.parent()));
        chain.pop();
        inodes.pop_back();
    }
    EXPECT_EQ(openBefore + 1, test::openDescriptors().size());
}

TEST_F(DeepChain, GoesUpAndDownAcrossItsLimit) {
    for (int round = 0; round < 3; ++round) {
        while (chain.depth() > 2) {
            ASSERT_EQ(0, chain.openParent());
            chain.pop();
        }
        while (chain.depth() < kDeep) {
            ASSERT_EQ(0, chain.push(openFolder(chain.innermost(), "d")));
        }
        EXPECT_EQ(openBefore + FolderChain::kMaxOpen, test::openDescriptors().size());
    }
}

TEST_F(DeepChain, DoesNotFollowAFolderThatWasMovedAway) {
    while (chain.depth() > chain.outermostOpen() + 1) {
        ASSERT_EQ(0, chain.openParent());
        chain.pop();
    }
    std::string path = tree.path();
    for (std::size_t level = 1; level < chain.depth(); ++level) {
        path += "/d";
    }
    test::makeFolder(tree / "elsewhere");
    ASSERT_EQ(0, ::rename(path.c_str(), (tree / "elsewhere/d").c_str()));
    EXPECT_EQ(ESTALE, chain.openParent());
}

TEST(FolderChain, GivesEveryDescriptorBack) {
    const test::TempTree tree(test::fastFolder());
    test::makeChain(tree.path(), "d", 40);
    const test::NoDescriptorLeft noDescriptorLeft;
    FolderChain chain(openFolder(AT_FDCWD, tree.path().c_str()));
    for (int level = 0; level < 40; ++level) {
        ASSERT_EQ(0, chain.push(openFolder(chain.innermost(), "d")));
    }
}

}  // namespace
