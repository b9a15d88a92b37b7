#include <pkgcore/portable/storage/providers/native/NativeMoves.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

using fl::filesystem::SystemError;
using fl::filesystem::posix::FileDescriptor;
using fl::filesystem::posix::kHostCalls;
using fl::filesystem::posix::SystemCalls;
using foundation::storage::portable::moveItem;
using foundation::storage::provider::ReplacementPolicy;

std::string source;
bool synced;

int errorOfMove(const std::function<void()>& move) {
    try {
        move();
    } catch (const SystemError& failure) {
        return failure.get_error_code();
    } catch (const fl::filesystem::AccessDenied&) {
        return EACCES;
    } catch (const fl::filesystem::PathNotFound&) {
        return ENOENT;
    }
    return 0;
}

/// Between two file systems, which the first renaming of each test makes believe.
class NativeMoveAcross : public ::testing::Test {
protected:
    NativeMoveAcross() {
        source = tree_ / "a";
        synced = false;
        test::makeFile(source, "text");
        test::failOneCall<&SystemCalls::renameat>(calls_, 1, EXDEV);
        test::failOneCall<&SystemCalls::renameat2>(calls_, 1, EXDEV);
    }

    void move(ReplacementPolicy policy = ReplacementPolicy::FailIfExists) const {
        moveItem({folder_.get(), "a"}, {folder_.get(), "b"}, policy);
    }

    test::TempTree tree_;
    FileDescriptor folder_{::open(tree_.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    test::ScopedSystemCalls calls_;
};

TEST_F(NativeMoveAcross, CopiesAndRemovesTheSource) {
    move();
    EXPECT_EQ("text", test::contentOf(tree_ / "b"));
    EXPECT_FALSE(test::isThere(source));
}

TEST_F(NativeMoveAcross, ReplacesAFile) {
    test::makeFile(tree_ / "b", "old");
    move(ReplacementPolicy::ReplaceExisting);
    EXPECT_EQ("text", test::contentOf(tree_ / "b"));
    EXPECT_FALSE(test::isThere(source));
}

TEST_F(NativeMoveAcross, RemovesNothingBeforeTheCopyIsOnTheDisk) {
    calls_->syncfs = [](int folder) {
        synced = true;
        return kHostCalls.syncfs(folder);
    };
    calls_->unlinkat = [](int folder, const char* name, int flags) {
        EXPECT_TRUE(synced);
        return kHostCalls.unlinkat(folder, name, flags);
    };
    move();
    EXPECT_FALSE(test::isThere(source));
}

TEST_F(NativeMoveAcross, KeepsBothWhenTheCopyCannotBeBroughtToTheDisk) {
    test::failCall<&SystemCalls::syncfs>(calls_, 1, EIO);
    EXPECT_EQ(EIO, errorOfMove([this] { move(); }));
    EXPECT_EQ("text", test::contentOf(source));
    EXPECT_EQ("text", test::contentOf(tree_ / "b"));
}

TEST_F(NativeMoveAcross, KeepsAFileThatWasWrittenToMeanwhile) {
    calls_->syncfs = [](int folder) {
        test::makeFile(source, "newer text");
        return kHostCalls.syncfs(folder);
    };
    EXPECT_EQ(EBUSY, errorOfMove([this] { move(); }));
    EXPECT_EQ("newer text", test::contentOf(source));
}

/// A folder "a" with "new" in it, to be moved over a folder "b" with "old" in it.
class NativeFolderMove : public ::testing::Test {
protected:
    NativeFolderMove() {
        for (const auto& [folder, file] : {std::pair("a", "a/new"), std::pair("b", "b/old")}) {
            test::makeFolder(tree_ / folder);
            test::makeFile(tree_ / file, file);
        }
    }

    int move() const {
        return errorOfMove([this] {
            moveItem({folder_.get(), "a"}, {folder_.get(), "b"}, ReplacementPolicy::ReplaceExisting);
        });
    }

    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& [name, what] : test::snapshot(tree_.path())) names.push_back(name);
        return names;
    }

    test::TempTree tree_;
    FileDescriptor folder_{::open(tree_.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    test::ScopedSystemCalls calls_;
};

TEST_F(NativeFolderMove, ReplacesAFolderThatHoldsSomething) {
    EXPECT_EQ(0, move());
    EXPECT_EQ("a/new", test::contentOf(tree_ / "b/new"));
    EXPECT_EQ((std::vector<std::string>{"b", "b/new"}), names());
}

TEST_F(NativeFolderMove, LeavesTheRestOfTheOldOneWhereNobodyTakesItForTheSource) {
    test::failCall<&SystemCalls::unlinkat>(calls_, 1, EIO);
    EXPECT_EQ(EIO, move());
    EXPECT_EQ("a/new", test::contentOf(tree_ / "b/new"));
    EXPECT_FALSE(test::isThere(tree_ / "a"));
    EXPECT_EQ(4U, names().size()) << "the new folder and the rest";
    EXPECT_EQ(ENOENT, move());
    EXPECT_EQ("a/new", test::contentOf(tree_ / "b/new"));
}

TEST_F(NativeFolderMove, ChangesNothingWhereTheOldOneCannotTakeAnotherName) {
    test::failOneCall<&SystemCalls::renameat>(calls_, 2, EACCES);
    EXPECT_EQ(EACCES, move());
    EXPECT_EQ((std::vector<std::string>{"a", "a/new", "b", "b/old"}), names());
}

}  // namespace
