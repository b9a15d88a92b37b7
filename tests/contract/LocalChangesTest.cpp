// What the local back end makes, links, renames and removes.

#include <pkgcore/platform/filesystem/FileStatus.hpp>

#include "tests/contract/LocalContract.hpp"

using contract::LocalContract;
namespace errc = boost::system::errc;

namespace {

class LocalChanges : public LocalContract {};

TEST_F(LocalChanges, CreateFolderMakesOneFolder) {
    ops.doCreateFolder(u"a//b/", msg, ec);
    EXPECT_EQ(platform.calls(), Calls{"create_directory('a//b/')"});
    expectNothingReported();
}

TEST_F(LocalChanges, CreateFoldersMakesAllOfThem) {
    ops.doCreateFolders(u"a/b", msg, ec);
    EXPECT_EQ(platform.calls(), Calls{"create_directories('a/b')"});
    expectNothingReported();
}

TEST_F(LocalChanges, CreatingWhatIsThereAlreadyIsNoFailureOfTheBackEnd) {
    platform.create_directory.returns(false);
    platform.create_directories.returns(false);
    ops.doCreateFolder(u"a", msg, ec);
    ops.doCreateFolders(u"a", msg, ec);
    expectNothingReported();
}

TEST_F(LocalChanges, SymlinkHoldsItsTargetWithBackslashes) {
    ops.doCreateSymlink(u"a/b/d", u"x/link", msg, ec);
    EXPECT_EQ(platform.calls(), Calls{"create_symlink('a\\b\\d', 'x/link', 1)"});
    expectNothingReported();
}

TEST_F(LocalChanges, SymlinkReplacesEverySlashOfItsTarget) {
    ops.doCreateSymlink(u"//../a\\b//", u"l", msg, ec);
    EXPECT_EQ(platform.calls(), Calls{"create_symlink('\\\\..\\a\\b\\\\', 'l', 1)"});
}

TEST_F(LocalChanges, SymlinkIsAlwaysMadeAsOneToAFile) {
    platform.symlink_status.returns(scripted::aFolder());
    ops.doCreateSymlink(u"folder", u"l", msg, ec);
    ops.doCreateSymlink(u"", u"", msg, ec);
    static_assert(fl::filesystem::file_status::regular_file == 1);
    EXPECT_EQ(platform.calls(), (Calls{"create_symlink('folder', 'l', 1)", "create_symlink('', '', 1)"}));
}

TEST_F(LocalChanges, SymlinkLeavesTheTargetOfTheCallerAlone) {
    const opc::ustring target = u"a/b";
    ops.doCreateSymlink(target, u"l", msg, ec);
    EXPECT_EQ(target, u"a/b");
}

TEST_F(LocalChanges, RenameRenames) {
    ops.doRename(u"a", u"b", msg, ec);
    EXPECT_EQ(platform.calls(), Calls{"rename('a', 'b')"});
    expectNothingReported();
}

TEST_F(LocalChanges, RenameWithAnEmptySideIsInvalidAndTouchesNothing) {
    ops.doRename(u"", u"b", msg, ec);
    expectReported(errc::invalid_argument, "Empty path not permitted");
    msg = kOldMessage;
    ec = kOldCode;
    ops.doRename(u"a", u"", msg, ec);
    expectReported(errc::invalid_argument, "Empty path not permitted");
    ops.doRename(u"", u"", msg, ec);
    EXPECT_EQ(platform.calls(), Calls{});
}

TEST_F(LocalChanges, RemoveRemovesOneItem) {
    ops.doRemove(u"a", msg, ec);
    ops.doRemove(u"", msg, ec);
    EXPECT_EQ(platform.calls(), (Calls{"remove('a')", "remove('')"}));
    expectNothingReported();
}

TEST_F(LocalChanges, RemoveAllRemovesTheTree) {
    ops.doRemoveAll(u"a", msg, ec);
    ops.doRemoveAll(u"", msg, ec);
    EXPECT_EQ(platform.calls(), (Calls{"remove_all('a')", "remove_all('')"}));
    expectNothingReported();
}

}  // namespace
