// Copying with the local back end: which call for which kind of source and destination, and in which order.

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/i18n/CvtException.hpp>

#include "tests/contract/LocalContract.hpp"

using contract::LocalContract;
using fl::filesystem::file_status;
using opc::ExistsMode;
using scripted::aFile;
using scripted::aFolder;
using scripted::aLink;
using scripted::ofKind;
namespace errc = boost::system::errc;

namespace {

constexpr ExistsMode kUnnamed = static_cast<ExistsMode>(7);
constexpr ExistsMode kAllModes[] = {opc::Ignore, opc::Fail, opc::Replace, kUnnamed};

class LocalCopy : public LocalContract {
protected:
    void copy(ExistsMode mode) { ops.doCopy(u"a", u"b", mode, msg, ec); }

    void copyFolder(ExistsMode mode, file_status destination) {
        platform.symlink_status.at(u"a").returns(aFolder());
        platform.symlink_status.at(u"b").returns(destination);
        copy(mode);
    }
};

/// Each mode in a test of its own.
class LocalCopyInEveryMode : public LocalCopy, public testing::WithParamInterface<ExistsMode> {};
INSTANTIATE_TEST_SUITE_P(Modes, LocalCopyInEveryMode, testing::ValuesIn(kAllModes));

TEST_P(LocalCopyInEveryMode, ReportsAMissingSourceBeforeAnythingElse) {
    platform.symlink_status.at(u"b").returns(aFolder());
    copy(GetParam());
    expectReported(errc::no_such_file_or_directory, "Source does not exist: user(a)");
    EXPECT_EQ(platform.calls(), (Calls{"symlink_status('a')", "initialize()", "to_string('a')"}));
}

TEST_P(LocalCopyInEveryMode, AsksThePlatformToCopyAFileWithoutLookingAtTheDestination) {
    platform.symlink_status.returns(aFile());
    copy(GetParam());
    const std::string option = GetParam() == opc::Replace ? "1" : "0";
    EXPECT_EQ(platform.calls(), (Calls{"symlink_status('a')", "copy_file('a', 'b', " + option + ")"}));
    expectNothingReported();
}

TEST_P(LocalCopyInEveryMode, CopiesALinkItself) {
    platform.symlink_status.returns(aLink());
    copy(GetParam());
    EXPECT_EQ(platform.calls(), (Calls{"symlink_status('a')", "copy_symlink('a', 'b')"}));
    expectNothingReported();
}

TEST_P(LocalCopyInEveryMode, PassesOverAnyOtherKindInSilence) {
    for (const unsigned kind : {file_status::block_file, file_status::character_file, file_status::fifo_file,
                                file_status::socket_file, file_status::unknown_file}) {
        platform.symlink_status.at(u"a").returns(ofKind(kind));
    }
    for (int i = 0; i < 5; ++i) {
        copy(GetParam());
    }
    EXPECT_EQ(platform.calls(), Calls(5, "symlink_status('a')"));
    expectNothingReported();
}

TEST_P(LocalCopyInEveryMode, CopiesAFolderOntoNothingAtOnce) {
    copyFolder(GetParam(), scripted::nothing());
    EXPECT_EQ(platform.calls(),
              (Calls{"symlink_status('a')", "symlink_status('b')", "copy_directory('a', 'b')"}));
    expectNothingReported();
}

TEST_F(LocalCopy, FailsForAFolderOntoAnythingThatExists) {
    for (const file_status& destination : {aFolder(), aFile(), aLink(), ofKind(file_status::unknown_file)}) {
        msg = kOldMessage;
        ec = kOldCode;
        platform.symlink_status.forget();
        copyFolder(opc::Fail, destination);
        expectReported(errc::file_exists, "Destination exists: user(b)");
    }
    EXPECT_EQ(platform.callsTo({"copy_directory", "remove_all"}), Calls{});
}

TEST_F(LocalCopy, AsksForBothStatusesBeforeItFails) {
    copyFolder(opc::Fail, aFolder());
    EXPECT_EQ(platform.calls(),
              (Calls{"symlink_status('a')", "symlink_status('b')", "initialize()", "to_string('b')"}));
}

TEST_F(LocalCopy, ReplaceRemovesTheOldFolderFirst) {
    copyFolder(opc::Replace, aFolder());
    EXPECT_EQ(platform.calls(), (Calls{"symlink_status('a')", "symlink_status('b')", "remove_all('b')",
                                       "copy_directory('a', 'b')"}));
    expectNothingReported();
}

TEST_F(LocalCopy, ReplaceRemovesADanglingLinkAtTheDestination) {
    copyFolder(opc::Replace, aLink());
    EXPECT_EQ(platform.callsTo({"remove_all", "copy_directory"}),
              (Calls{"remove_all('b')", "copy_directory('a', 'b')"}));
}

TEST_F(LocalCopy, IgnoreCopiesAFolderOntoAnExistingOne) {
    copyFolder(opc::Ignore, aFolder());
    EXPECT_EQ(platform.callsTo({"remove_all", "copy_directory"}), Calls{"copy_directory('a', 'b')"});
    expectNothingReported();
}

TEST_F(LocalCopy, AnUnnamedModeIsIgnore) {
    copyFolder(kUnnamed, aFolder());
    EXPECT_EQ(platform.callsTo({"remove_all", "copy_directory"}), Calls{"copy_directory('a', 'b')"});
    expectNothingReported();
}

TEST_F(LocalCopy, DoesNotCopyWhenTheOldFolderCannotBeRemoved) {
    platform.remove_all.throws(fl::filesystem::AccessDenied(u"b/x"));
    copyFolder(opc::Replace, aFolder());
    EXPECT_EQ(platform.callsTo({"remove_all", "copy_directory"}), Calls{"remove_all('b')"});
    expectReported(errc::permission_denied, "Access denied: user(b/x)");
}

TEST_F(LocalCopy, DoesNotRollBackWhenTheCopyFails) {
    platform.copy_directory.throws(fl::filesystem::AccessDenied(u"a/x"));
    copyFolder(opc::Replace, aFolder());
    EXPECT_EQ(platform.callsTo({"remove_all", "copy_directory"}),
              (Calls{"remove_all('b')", "copy_directory('a', 'b')"}));
    expectReported(errc::permission_denied, "Access denied: user(a/x)");
}

TEST_F(LocalCopy, ReportsWhatCopyingOntoAnExistingFileGives) {
    platform.symlink_status.returns(aFile());
    platform.copy_file.throws(fl::filesystem::FileExistsError(u"b"));
    copy(opc::Ignore);
    expectReported(errc::file_exists, "File exists: user(b)");
}

TEST_F(LocalCopy, DescribesASourceThatTheUsersEncodingCannotSpell) {
    platform.to_string.at(u"a").throws(fl::i18n::CvtUnmappableCharacter("no such character"));
    copy(opc::Fail);
    expectReported(errc::no_such_file_or_directory, "Source does not exist: lenient(a)");
}

}  // namespace
