#include <pkgcore/portable/storage/providers/native/NativeMoves.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

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

}  // namespace
