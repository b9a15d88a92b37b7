// The end of a guard after somebody else has had a hand in what it guards: what is the guard's goes, what is
// somebody else's stays, and nothing is ever thrown.

#include <pkgcore/util/TempdirGuard.hpp>
#include <pkgcore/util/TempfileGuard.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/util/GuardedNames.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <optional>

using opc::util::TempdirGuard;
using opc::util::TempfileGuard;
using test::bytes;
using test::snapshot;
using test::TempTree;
using test::TreeSnapshot;

namespace {

/// Lets a guard of a file in `tree` end after `work` has been done on its path.
void endFileGuardAfter(const TempTree& tree, const std::function<void(const std::string& path)>& work) {
    const TempfileGuard guard(tree.text("in"));
    work(bytes(guard.getFileName()));
}

void endFolderGuardAfter(const TempTree& tree, const std::function<void(const std::string& path)>& work) {
    const TempdirGuard guard(tree.text("in"));
    work(bytes(guard.getDirectoryName()));
}

void takeFileAway(const std::string& path) { ASSERT_EQ(0, ::unlink(path.c_str())); }
void takeFolderAway(const std::string& path) { ASSERT_EQ(0, ::rmdir(path.c_str())); }

/// A tree with the folder "in", where guards stand, and with a folder elsewhere that must survive.
class GuardEnds : public testing::Test {
protected:
    GuardEnds() {
        test::makeFolder(tree / "in");
        test::makeFolder(tree / "elsewhere");
        test::makeFile(tree / "elsewhere/kept", "text");
        test::makeFolder(tree / "elsewhere/sub");
        before = snapshot(tree.path());
    }

    void expectNothingElse() const { EXPECT_EQ(before, snapshot(tree.path())); }

    TempTree tree;
    TreeSnapshot before;
};

TEST_F(GuardEnds, OfAFileRemovesItWhateverItHoldsAndWhoeverHasItOpen) {
    for (const mode_t mode : {0600U, 0400U, 0000U}) {
        int descriptor = -1;
        endFileGuardAfter(tree, [&](const std::string& path) {
            test::makeFile(path, std::string(100'000, 'x'), 0600);
            descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
            test::setMode(path, mode);
        });
        expectNothingElse();
        EXPECT_EQ(0, ::close(descriptor));
    }
}

TEST_F(GuardEnds, OfAFileRemovesAnEmptyFolderInItsPlace) {
    endFileGuardAfter(tree, [](const std::string& path) {
        takeFileAway(path);
        test::makeFolder(path);
    });
    expectNothingElse();
}

TEST_F(GuardEnds, OfAFileRemovesALinkInItsPlaceAndNotTheFolderThatItLeadsTo) {
    for (const char* const target : {"../elsewhere", "../elsewhere/kept", "nowhere"}) {
        endFileGuardAfter(tree, [&](const std::string& path) {
            takeFileAway(path);
            test::makeLink(target, path);
        });
        expectNothingElse();
    }
}

TEST_F(GuardEnds, OfAFileIsQuietWhereItsFolderIsGone) {
    endFileGuardAfter(tree, [&](const std::string& path) {
        takeFileAway(path);
        ASSERT_EQ(0, ::rmdir((tree / "in").c_str()));
    });
    test::makeFolder(tree / "in");
    endFileGuardAfter(tree, [&](const std::string&) {
        ASSERT_EQ(0, std::rename((tree / "in").c_str(), (tree / "moved").c_str()));
    });
    EXPECT_EQ(before.size() + 1, snapshot(tree.path()).size());  // the file, in the folder's new place
}

TEST_F(GuardEnds, OfAFolderRemovesADeepAndWideTree) {
    endFolderGuardAfter(tree, [](const std::string& path) {
        test::makeChain(path, std::string(200, 'n'), 40);  // longer than the host takes in one call
        for (int number = 0; number < 3'000; ++number) {
            test::makeFile(path + '/' + std::to_string(number));
        }
        test::makePipe(path + "/pipe");
    });
    expectNothingElse();
}

TEST_F(GuardEnds, OfAFolderRemovesTheLinksInItAndNotWhatTheyLeadTo) {
    endFolderGuardAfter(tree, [&](const std::string& path) {
        test::makeFolder(path + "/sub");
        test::makeLink(tree / "elsewhere", path + "/link");
        test::makeLink("../../../elsewhere", path + "/sub/link");
        test::makeLink("..", path + "/sub/up");
        test::makeLink("nowhere", path + "/dangling");
    });
    expectNothingElse();
}

TEST_F(GuardEnds, OfAFolderRemovesALinkInItsPlaceAndNotTheFolderThatItLeadsTo) {
    for (const char* const target : {"../elsewhere", "../elsewhere/kept", ".", "nowhere"}) {
        endFolderGuardAfter(tree, [&](const std::string& path) {
            takeFolderAway(path);
            test::makeLink(target, path);
        });
        expectNothingElse();
    }
}

TEST_F(GuardEnds, OfAFolderRemovesAFileInItsPlace) {
    endFolderGuardAfter(tree, [](const std::string& path) {
        takeFolderAway(path);
        test::makeFile(path, "text");
    });
    expectNothingElse();
}

TEST_F(GuardEnds, OfAFolderIsQuietWhereItsFolderIsGone) {
    endFolderGuardAfter(tree, [&](const std::string& path) {
        takeFolderAway(path);
        ASSERT_EQ(0, ::rmdir((tree / "in").c_str()));
        test::makeFile(tree / "in");
    });
    EXPECT_EQ("", test::contentOf(tree / "in"));
}

TEST_F(GuardEnds, OfReleasedItemsTouchesNothing) {
    TreeSnapshot made;
    {
        TempfileGuard file(tree.text("in"));
        TempdirGuard folder(tree.text("in"));
        test::makeFile(bytes(folder.getDirectoryName()) + "/held", "text");
        file.release();
        folder.release();
        made = snapshot(tree.path());
        EXPECT_EQ(before.size() + 3, made.size());
    }
    EXPECT_EQ(made, snapshot(tree.path()));
}

TEST_F(GuardEnds, InTheReverseOrderOfTheirBeginningsLeaveNothing) {
    {
        const TempdirGuard outer(tree.text("in"));
        const TempdirGuard inner(outer.getDirectoryName());
        const TempfileGuard file(inner.getDirectoryName());
        EXPECT_TRUE(test::isThere(bytes(file.getFileName())));
    }
    expectNothingElse();
}

TEST_F(GuardEnds, OfAFolderTakeGuardedItemsInItAlong) {
    std::optional<TempdirGuard> outer(std::in_place, tree.text("in"));
    const TempfileGuard file(outer->getDirectoryName());
    const TempdirGuard inner(outer->getDirectoryName());
    outer.reset();
    expectNothingElse();
}

TEST_F(GuardEnds, DuringTheUnwindingOfAnExceptionRemoveTheirItems) {
    EXPECT_THROW(
        {
            const TempfileGuard file(tree.text("in"));
            const TempdirGuard folder(tree.text("in"));
            throw 7;
        },
        int);
    expectNothingElse();
}

// Root may delete everywhere, so that these are tried without its rights.

TEST(GuardEndsOfAnOrdinaryUser, AreQuietInAFolderThatBecameReadOnly) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        test::makeFolder(tree / "in");
        std::string file;
        std::string folder;
        {
            const TempfileGuard fileGuard(tree.text("in"));
            const TempdirGuard folderGuard(tree.text("in"));
            file = bytes(fileGuard.getFileName());
            folder = bytes(folderGuard.getDirectoryName());
            test::makeFile(folder + "/held");
            test::setMode(tree / "in", 0500);
        }
        test::setMode(tree / "in", 0700);
        EXPECT_TRUE(test::isThere(file));
        EXPECT_TRUE(test::isThere(folder));
        EXPECT_FALSE(test::isThere(folder + "/held")) << "what may be deleted is";
    });
}

TEST(GuardEndsOfAnOrdinaryUser, RemoveAllThatMayBeRemovedAndLeaveTheRest) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        std::string name;
        {
            const TempdirGuard guard(tree.text(""));
            name = bytes(guard.getDirectoryName());
            for (const char* const folder : {"/a", "/locked", "/z"}) {
                test::makeFolder(name + folder);
                test::makeFile(name + folder + "/file", "text");
            }
            test::setMode(name + "/locked", 0500);
        }
        test::setMode(name + "/locked", 0700);
        EXPECT_EQ((TreeSnapshot{{"locked", "folder 0700"}, {"locked/file", "file 0644 'text'"}}),
                  snapshot(name));
    });
}

TEST(GuardEndsOfAnOrdinaryUser, AreQuietForAFolderThatNobodyMayEnter) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        std::string name;
        {
            const TempdirGuard guard(tree.text(""));
            name = bytes(guard.getDirectoryName());
            test::makeFile(name + "/held");
            test::setMode(name, 0000);
        }
        test::setMode(name, 0700);
        EXPECT_TRUE(test::isThere(name + "/held"));
    });
}

}  // namespace
