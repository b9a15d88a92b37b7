// What the virtual back end makes, copies, moves and removes.

#include "tests/contract/VirtualContract.hpp"

using contract::kFile;
using contract::kFolder;
using contract::kNothing;
using contract::storageFailure;
using contract::VirtualContract;
using foundation::storage::vfs::ErrorCode;
using opc::ExistsMode;
namespace errc = boost::system::errc;

namespace {

class VirtualChanges : public VirtualContract {
protected:
    /// What looking up the source of a pair asks of the platform.
    const Calls pairLookUp{"CanonicalAbsoluteIRI('a')", "CanonicalAbsoluteIRI('b')",
                           "vfs::exists('canonical(a)'@S)"};

    void expectPairCalls(const Calls& further) const {
        Calls all = pairLookUp;
        all.insert(all.end(), further.begin(), further.end());
        EXPECT_EQ(platform.calls(), all);
    }

    void copy(ExistsMode mode) { ops.doCopy(u"a", u"b", mode, msg, ec); }
    void rename() { ops.doRename(u"a", u"b", msg, ec); }
};

TEST_F(VirtualChanges, CreateFolderMakesOneFolderWithoutALook) {
    ops.doCreateFolder(u"a", msg, ec);
    EXPECT_EQ(platform.calls(), (Calls{"CanonicalAbsoluteIRI('a')", "createFolder('canonical(a)'@S)"}));
    expectNothingReported();
}

TEST_F(VirtualChanges, CreateFoldersMakesAllOfThemWithoutALook) {
    ops.doCreateFolders(u"a", msg, ec);
    EXPECT_EQ(platform.calls(),
              (Calls{"CanonicalAbsoluteIRI('a')", "createFolderRecursive('canonical(a)'@S)"}));
    expectNothingReported();
}

TEST_F(VirtualChanges, SymlinkIsRefusedWithoutALook) {
    ops.doCreateSymlink(u"a", u"b", msg, ec);
    expectReported(errc::operation_not_supported,
                   "Creation of symlinks is not supported by VirtualFileSystemOps");
    EXPECT_EQ(platform.calls(), Calls{});
}

TEST_F(VirtualChanges, RemoveRemovesAFile) {
    place(u"a", kFile);
    ops.doRemove(u"a", msg, ec);
    EXPECT_EQ(platform.calls(), (Calls{"CanonicalAbsoluteIRI('a')", "vfs::exists('canonical(a)'@S)",
                                       "removeFile('canonical(a)'@S)"}));
    expectNothingReported();
}

TEST_F(VirtualChanges, RemoveRemovesAFolderOnlyIfItIsEmpty) {
    place(u"a", kFolder);
    ops.doRemove(u"a", msg, ec);
    EXPECT_EQ(platform.calls().back(), "removeFolder('canonical(a)'@S, 0)");
    expectNothingReported();
}

TEST_F(VirtualChanges, RemoveAllRemovesAFile) {
    place(u"a", kFile);
    ops.doRemoveAll(u"a", msg, ec);
    EXPECT_EQ(platform.calls(), (Calls{"CanonicalAbsoluteIRI('a')", "vfs::exists('canonical(a)'@S)",
                                       "removeFile('canonical(a)'@S)"}));
    expectNothingReported();
}

TEST_F(VirtualChanges, RemoveAllRemovesAFolderWithItsContents) {
    place(u"a", kFolder);
    ops.doRemoveAll(u"a", msg, ec);
    EXPECT_EQ(platform.calls().back(), "removeFolder('canonical(a)'@S, 1)");
    expectNothingReported();
}

TEST_F(VirtualChanges, RemovingNothingIsReported) {
    ops.doRemove(u"a", msg, ec);
    expectNotFound("a");
    ops.doRemoveAll(u"b", msg, ec);
    expectNotFound("b");
    EXPECT_EQ(platform.callsTo({"removeFile", "removeFolder"}), Calls{});
}

struct CopyMode {
    ExistsMode mode;
    std::string policy;
};

class VirtualCopyInEveryMode : public VirtualChanges, public testing::WithParamInterface<CopyMode> {
protected:
    void copyInMode() { copy(GetParam().mode); }
};

INSTANTIATE_TEST_SUITE_P(Modes, VirtualCopyInEveryMode,
                         testing::Values(CopyMode{opc::Ignore, "0"}, CopyMode{opc::Fail, "0"},
                                         CopyMode{opc::Replace, "1"}, CopyMode{ExistsMode(7), "0"}));

TEST_P(VirtualCopyInEveryMode, CopiesAFileUnderThePolicyAndNeverLooksAtTheDestination) {
    place(u"a", kFile);
    place(u"b", kFolder);
    copyInMode();
    expectPairCalls({"copyFile('canonical(a)'@S, 'canonical(b)'@S, " + GetParam().policy + ")"});
    expectNothingReported();
}

TEST_P(VirtualCopyInEveryMode, CopiesAFolderUnderThePolicyAndNeverLooksAtTheDestination) {
    place(u"a", kFolder);
    place(u"b", kFile);
    copyInMode();
    expectPairCalls({"copyFolder('canonical(a)'@S, 'canonical(b)'@S, " + GetParam().policy + ")"});
    expectNothingReported();
}

TEST_P(VirtualCopyInEveryMode, ReportsAMissingSource) {
    place(u"b", kFile);
    copyInMode();
    EXPECT_EQ(platform.callsTo({"vfs::exists", "copyFile", "copyFolder"}),
              Calls{"vfs::exists('canonical(a)'@S)"});
    expectNotFound("a");
}

TEST_P(VirtualCopyInEveryMode, ReportsWhatTheStorageSaysOfTheDestination) {
    place(u"a", kFile);
    storage.copy.throws(storageFailure(ErrorCode::AlreadyExists));
    copyInMode();
    expectReported(errc::file_exists, "words: user(p)");
}

TEST_F(VirtualChanges, RenameAlwaysReplacesAFile) {
    place(u"a", kFile);
    rename();
    expectPairCalls({"moveFile('canonical(a)'@S, 'canonical(b)'@S, 1)"});
    expectNothingReported();
}

TEST_F(VirtualChanges, RenameAlwaysReplacesAFolder) {
    place(u"a", kFolder);
    rename();
    expectPairCalls({"moveFolder('canonical(a)'@S, 'canonical(b)'@S, 1)"});
    expectNothingReported();
}

TEST_F(VirtualChanges, RenamingNothingIsReported) {
    place(u"b", kFile);
    rename();
    expectPairCalls({"initialize()", "to_string('canonical(a)')"});
    expectNotFound("a");
}

TEST_F(VirtualChanges, OfTwoUnreadablePathsTheSourceIsReported) {
    using foundation::storage::vfs::InvalidIRIException;
    storage.makeCanonicalIRI.at(u"a").throws(InvalidIRIException("bad source", u"a"));
    storage.makeCanonicalIRI.at(u"b").throws(InvalidIRIException("bad destination", u"b"));
    copy(opc::Replace);
    expectReported(errc::bad_address, "bad source: user(a)");
    rename();
    expectReported(errc::bad_address, "bad source: user(a)");
    EXPECT_EQ(platform.callsTo({"CanonicalAbsoluteIRI"}), Calls(2, "CanonicalAbsoluteIRI('a')"));
}

TEST_F(VirtualChanges, AnUnreadableDestinationIsReportedBeforeTheSourceIsLookedUp) {
    using foundation::storage::vfs::InvalidIRIException;
    storage.makeCanonicalIRI.at(u"b").throws(InvalidIRIException("bad destination", u"b"));
    copy(opc::Replace);
    rename();
    expectReported(errc::bad_address, "bad destination: user(b)");
    EXPECT_EQ(platform.callsTo({"vfs::exists"}), Calls{});
}

TEST_F(VirtualChanges, NothingIsTakenBackAfterAFailure) {
    place(u"a", kFolder);
    storage.move.throws(storageFailure());
    storage.copy.throws(storageFailure());
    rename();
    copy(opc::Replace);
    EXPECT_EQ(platform.callsTo({"removeFolder", "removeFile", "moveFolder", "copyFolder"}),
              (Calls{"moveFolder('canonical(a)'@S, 'canonical(b)'@S, 1)",
                     "copyFolder('canonical(a)'@S, 'canonical(b)'@S, 1)"}));
}

TEST_F(VirtualChanges, ThePoliciesHaveTheValuesOfTheStorageLibrary) {
    using foundation::storage::provider::ReplacementPolicy;
    using foundation::storage::vfs::FolderRemovalPolicy;
    EXPECT_EQ(static_cast<unsigned>(ReplacementPolicy::FailIfExists), 0u);
    EXPECT_EQ(static_cast<unsigned>(ReplacementPolicy::ReplaceExisting), 1u);
    EXPECT_EQ(static_cast<unsigned>(FolderRemovalPolicy::OnlyIfEmpty), 0u);
    EXPECT_EQ(static_cast<unsigned>(FolderRemovalPolicy::WithContents), 1u);
}

}  // namespace
