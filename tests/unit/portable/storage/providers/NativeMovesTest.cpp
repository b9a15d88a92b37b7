#include <pkgcore/portable/storage/providers/native/NativeMoves.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
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
    } catch (const fl::filesystem::AccessDenied&) {
        return EACCES;
    } catch (const fl::filesystem::PathNotFound&) {
        return ENOENT;
    }
    return 0;
}

/// The text of a failure of storage.
std::string failureOf(const std::function<void()>& move) {
    try {
        move();
    } catch (const foundation::storage::vfs::Exception& failure) {
        EXPECT_EQ(foundation::storage::vfs::ErrorCode::AccessDenied, failure.getErrorCode());
        return failure.what();
    }
    return "";
}

/// The one item with a temporary name.
std::string temporaryIn(const test::TempTree& tree) {
    std::string found;
    for (const auto& [name, what] : test::snapshot(tree.path())) {
        if (name[0] == '.' && name.find('/') == std::string::npos) {
            EXPECT_EQ("", found) << name;
            found = name;
        }
    }
    return found;
}

/// Moves a folder in the place of another, or of nothing, while nothing can be removed: the new one is whole,
/// and a move that is tried again does not take the rest for it.
void expectRestIsInNobodysWay(const test::TempTree& tree, test::ScopedSystemCalls& calls,
                              const std::string& from, const std::string& to, const std::string& file) {
    const FileDescriptor folder{::open(tree.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    const auto move = [&] {
        moveItem({folder.get(), from.c_str()}, {folder.get(), to.c_str()},
                 ReplacementPolicy::ReplaceExisting);
    };
    test::failCall<&SystemCalls::unlinkat>(calls, 1, EACCES);
    const std::string failure = failureOf(move);
    const std::string rest = temporaryIn(tree);
    EXPECT_NE("", rest);
    EXPECT_NE(std::string::npos, failure.find(rest)) << failure;
    EXPECT_TRUE(test::isThere(tree / (to + '/' + file)));
    EXPECT_FALSE(test::isThere(tree / from));
    EXPECT_THROW(move(), fl::filesystem::PathNotFound);
    EXPECT_TRUE(test::isThere(tree / (to + '/' + file)));
}

/// With a/new, which is to take the place of b/old.
class NativeMoveOverFolder : public ::testing::Test {
protected:
    NativeMoveOverFolder() {
        for (const char* const path : {"a", "b"}) test::makeFolder(tree_ / path);
        for (const char* const path : {"a/new", "b/old"}) test::makeFile(tree_ / path);
    }

    test::TempTree tree_;
    test::ScopedSystemCalls calls_;
};

TEST_F(NativeMoveOverFolder, LeavesTheRestOfTheOldOneUnderAnotherName) {
    expectRestIsInNobodysWay(tree_, calls_, "a", "b", "new");
}

TEST_F(NativeMoveOverFolder, LeavesItSoWhereNamesCannotBeExchanged) {
    test::failCall<&SystemCalls::renameat2>(calls_, 1, EINVAL);
    expectRestIsInNobodysWay(tree_, calls_, "a", "b", "new");
}

TEST_F(NativeMoveOverFolder, GoesBackWhereTheOldOneKeepsItsName) {
    calls_->renameat2 = [](int from, const char* name, int to, const char* newName, unsigned flags) {
        if ((flags & RENAME_EXCHANGE) != 0) {
            return kHostCalls.renameat2(from, name, to, newName, flags);
        }
        errno = EIO;
        return -1;
    };
    const test::TreeSnapshot before = test::snapshot(tree_.path());
    const FileDescriptor folder{::open(tree_.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    EXPECT_EQ(EIO, errorOfMove([&] {
                  moveItem({folder.get(), "a"}, {folder.get(), "b"}, ReplacementPolicy::ReplaceExisting);
              }));
    EXPECT_EQ(before, test::snapshot(tree_.path()));
}

TEST_F(NativeMoveOverFolder, PutsTheOldOneBackWhereTheNewOneDoesNotTakeItsPlace) {
    test::failCall<&SystemCalls::renameat2>(calls_, 1, EINVAL);
    test::failOneCall<&SystemCalls::renameat>(calls_, 3, EIO);  // after the attempt and the putting away
    const test::TreeSnapshot before = test::snapshot(tree_.path());
    const FileDescriptor folder{::open(tree_.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    EXPECT_EQ(EIO, errorOfMove([&] {
                  moveItem({folder.get(), "a"}, {folder.get(), "b"}, ReplacementPolicy::ReplaceExisting);
              }));
    EXPECT_EQ(before, test::snapshot(tree_.path()));
}

/// Where renaming knows no flags, as on systems and file systems of an older age.
TEST_F(NativeMoveOverFolder, ReplacesNothingWhereItMustNotAndTheSystemCannotSeeToThat) {
    test::failCall<&SystemCalls::renameat2>(calls_, 1, ENOSYS);
    const test::TreeSnapshot before = test::snapshot(tree_.path());
    const FileDescriptor folder{::open(tree_.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    const auto move = [&](const char* to) {
        moveItem({folder.get(), "a"}, {folder.get(), to}, ReplacementPolicy::FailIfExists);
    };
    EXPECT_THROW(move("b"), fl::filesystem::FileExistsError);
    EXPECT_EQ(before, test::snapshot(tree_.path()));
    move("c");
    EXPECT_TRUE(test::isThere(tree_ / "c/new"));
    EXPECT_FALSE(test::isThere(tree_ / "a"));
}

/// Of two names of one file, a onto b.
class NativeMoveOntoItself : public ::testing::Test {
protected:
    NativeMoveOntoItself() {
        test::makeFile(tree_ / "a", "text");
        EXPECT_EQ(0, ::link((tree_ / "a").c_str(), (tree_ / "b").c_str()));
    }

    void move() const {
        moveItem({folder_.get(), "a"}, {folder_.get(), "b"}, ReplacementPolicy::ReplaceExisting);
    }

    test::TempTree tree_;
    FileDescriptor folder_{::open(tree_.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    test::ScopedSystemCalls calls_;
};

TEST_F(NativeMoveOntoItself, GivesOneNameUp) {
    move();
    EXPECT_EQ(1U, test::snapshot(tree_.path()).size());
    EXPECT_EQ("text", test::contentOf(tree_ / "b"));
}

TEST_F(NativeMoveOntoItself, KeepsBothNamesWhereOneCannotBeRemoved) {
    const test::TreeSnapshot before = test::snapshot(tree_.path());
    test::failCall<&SystemCalls::unlinkat>(calls_, 1, EIO);
    EXPECT_EQ(EIO, errorOfMove([this] { move(); }));
    EXPECT_EQ(before, test::snapshot(tree_.path()));
}

TEST_F(NativeMoveOntoItself, TellsTheNameThatIsLeft) {
    test::failCall<&SystemCalls::unlinkat>(calls_, 1, EIO);
    test::failCall<&SystemCalls::renameat2>(calls_, 2, EACCES);
    const std::string failure = failureOf([this] { move(); });
    const std::string rest = temporaryIn(tree_);
    EXPECT_EQ("text", test::contentOf(tree_ / rest));
    EXPECT_NE(std::string::npos, failure.find(rest)) << failure;
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

TEST_F(NativeMoveAcross, TakesALinkAlongAndNotWhatItLeadsTo) {
    test::makeFile(tree_ / "target", "text");
    test::makeLink("target", tree_ / "link");
    moveItem({folder_.get(), "link"}, {folder_.get(), "b"}, ReplacementPolicy::FailIfExists);
    EXPECT_EQ("target", test::linkTextOf(tree_ / "b"));
    EXPECT_FALSE(test::isThere(tree_ / "link"));
    EXPECT_EQ("text", test::contentOf(tree_ / "target"));
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

TEST_F(NativeMoveAcross, LeavesTheRestOfAFolderUnderAnotherName) {
    test::makeFolder(tree_ / "d");
    test::makeFile(tree_ / "d/new");
    calls_->renameat2 = kHostCalls.renameat2;  // replacing renames by the other call
    expectRestIsInNobodysWay(tree_, calls_, "d", "b", "new");
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
