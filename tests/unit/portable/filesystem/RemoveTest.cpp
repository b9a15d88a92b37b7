#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"

#include <fcntl.h>

#include <cerrno>

namespace {

using namespace fl::filesystem;
using test::failedPath;
using test::ScopedSystemCalls;
using test::TempTree;

TEST(Remove, TakesFilesLinksAndEmptyFolders) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::makeFolder(tree / "folder");
    test::makePipe(tree / "pipe");
    test::makeLink("nowhere", tree / "dangling");
    for (const char* const name : {"file", "folder", "pipe", "dangling"}) {
        remove(tree.text(name));
        EXPECT_FALSE(test::isThere(tree / name)) << name;
    }
}

TEST(Remove, OfALinkLeavesItsTarget) {
    const TempTree tree;
    test::makeFolder(tree / "folder");
    test::makeFile(tree / "file");
    for (const char* const target : {"folder", "file"}) {
        for (const char* const name : {"link", "link/", "link//"}) {
            test::makeLink(target, tree / "link");
            remove(tree.text(name));
            EXPECT_FALSE(test::isThere(tree / "link"));
            EXPECT_TRUE(test::isThere(tree / target));
        }
    }
}

TEST(Remove, OfAFolderThatHoldsSomethingIsRefused) {
    const TempTree tree;
    test::makeFolder(tree / "folder");
    test::makeFile(tree / "folder/file");
    EXPECT_EQ(tree.text("folder"), failedPath<DirectoryNotEmpty>([&] { remove(tree.text("folder")); }));
    EXPECT_TRUE(test::isThere(tree / "folder/file"));
}

TEST(Remove, OfNothingIsNotFound) {
    const TempTree tree;
    test::makeFile(tree / "file");
    EXPECT_EQ(tree.text("missing"), failedPath<PathNotFound>([&] { remove(tree.text("missing")); }));
    EXPECT_THROW(remove(tree.text("missing/below")), PathNotFound);
    EXPECT_THROW(remove(tree.text("file/below")), NotDirectoryError);
    EXPECT_THROW(remove(u""), PathNotFound);
    EXPECT_THROW(remove(std::u16string(u"/tmp/a\0b", 8)), FileNameConversionFailure);
}

TEST(Remove, DotsAtTheEndAreInvalid) {
    const TempTree tree;
    test::makeFolder(tree / "folder");
    for (const char* const name : {"folder/.", "folder/..", "folder/./", "folder/..//"}) {
        EXPECT_EQ(tree.text(name), failedPath<InvalidArgument>([&] { remove(tree.text(name)); }));
    }
    EXPECT_THROW(remove(u"."), InvalidArgument);
    EXPECT_THROW(remove(u".."), InvalidArgument);
    EXPECT_TRUE(test::isThere(tree / "folder"));
}

TEST(Remove, NeedsTheRightToChangeTheFolder) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        test::makeFolder(tree / "fixed");
        test::makeFile(tree / "fixed/file");
        test::makeFolder(tree / "fixed/folder");
        test::setMode(tree / "fixed", 0500);
        EXPECT_THROW(remove(tree.text("fixed/file")), AccessDenied);
        EXPECT_THROW(remove(tree.text("fixed/folder")), AccessDenied);
    });
}

int refusalOfFiles = 0;
int refusalOfFolders = 0;

// What hosts other than this one may say.
int scriptedUnlink(int, const char*, int flags) {
    errno = (flags & AT_REMOVEDIR) != 0 ? refusalOfFolders : refusalOfFiles;
    return errno == 0 ? 0 : -1;
}

void removeWith(int ofFiles, int ofFolders) {
    ScopedSystemCalls calls;
    calls->unlinkat = scriptedUnlink;
    refusalOfFiles = ofFiles;
    refusalOfFolders = ofFolders;
    remove(u"/x");
}

TEST(Remove, UnderstandsEachHost) {
    EXPECT_NO_THROW(removeWith(EISDIR, 0));
    EXPECT_NO_THROW(removeWith(EPERM, 0));
    EXPECT_THROW(removeWith(EISDIR, ENOTEMPTY), DirectoryNotEmpty);
    EXPECT_THROW(removeWith(EPERM, EEXIST), DirectoryNotEmpty);
    EXPECT_THROW(removeWith(EPERM, ENOTDIR), AccessDenied);  // a file that must not be removed
    EXPECT_THROW(removeWith(EACCES, 0), AccessDenied);
    EXPECT_EQ(EBUSY, test::failedNumber([] { removeWith(EISDIR, EBUSY); }));
    EXPECT_EQ(EROFS, test::failedNumber([] { removeWith(EROFS, 0); }));
}

}  // namespace
