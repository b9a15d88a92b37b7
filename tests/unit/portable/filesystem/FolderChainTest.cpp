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
        test::makeChain(tree_.path(), "d", kDeep - 1);
        while (chain_.depth() < kDeep) {
            inodes_.push_back(inodeOf(chain_.innermost()));
            EXPECT_EQ(0, chain_.push(openFolder(chain_.innermost(), "d")));
        }
    }

    test::TempTree tree_{test::fastFolder()};
    std::size_t openBefore_ = test::openDescriptors().size();
    FolderChain chain_{openFolder(AT_FDCWD, tree_.path().c_str())};
    std::vector<ino_t> inodes_;
};

TEST_F(DeepChain, HoldsFewDescriptors) {
    EXPECT_EQ(openBefore_ + FolderChain::kMaxOpen, test::openDescriptors().size());
    EXPECT_TRUE(chain_.isFull());
    EXPECT_EQ(kDeep - FolderChain::kMaxOpen, chain_.outermostOpen());
}

TEST_F(DeepChain, FindsTheWayBack) {
    while (chain_.depth() > 1) {
        ASSERT_EQ(0, chain_.openParent());
        ASSERT_EQ(inodes_.back(), inodeOf(chain_.parent()));
        chain_.pop();
        inodes_.pop_back();
    }
    EXPECT_EQ(openBefore_ + 1, test::openDescriptors().size());
}

TEST_F(DeepChain, GoesUpAndDownAcrossItsLimit) {
    for (int round = 0; round < 3; ++round) {
        while (chain_.depth() > 2) {
            ASSERT_EQ(0, chain_.openParent());
            chain_.pop();
        }
        while (chain_.depth() < kDeep) {
            ASSERT_EQ(0, chain_.push(openFolder(chain_.innermost(), "d")));
        }
        EXPECT_EQ(openBefore_ + FolderChain::kMaxOpen, test::openDescriptors().size());
    }
}

TEST_F(DeepChain, DoesNotFollowAFolderThatWasMovedAway) {
    while (chain_.depth() > chain_.outermostOpen() + 1) {
        ASSERT_EQ(0, chain_.openParent());
        chain_.pop();
    }
    std::string path = tree_.path();
    for (std::size_t level = 1; level < chain_.depth(); ++level) {
        path += "/d";
    }
    test::makeFolder(tree_ / "elsewhere");
    ASSERT_EQ(0, ::rename(path.c_str(), (tree_ / "elsewhere/d").c_str()));
    EXPECT_EQ(ESTALE, chain_.openParent());
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
