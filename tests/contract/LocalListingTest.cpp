// Listing a folder with the local back end.

#include <pkgcore/platform/filesystem/DirectoryIterator.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include "tests/contract/LocalContract.hpp"

using contract::LocalContract;
using fl::filesystem::AccessDenied;
using fl::filesystem::file_status;
using fl::filesystem::PathNotFound;
using scripted::Entry;
using scripted::file;
using scripted::folder;
using scripted::link;
namespace errc = boost::system::errc;

namespace {

using Files = std::vector<opc::ustring>;

/// Whose operation is called: that of the back end itself, which has no use for its own virtual operation, or
/// of a class derived from it.
enum class Kind { itself, derived };

/// The path functions answer with their argument here, so that paths stay readable in trees.
class LocalListing : public LocalContract, public testing::WithParamInterface<Kind> {
protected:
    Files files;

    void list(const opc::ustring& top, bool recursive) {
        opc::LocalFileSystemOps itself;
        opc::LocalFileSystemOps& listed = GetParam() == Kind::itself ? itself : ops;
        (listed.*(&contract::OpenLocalOps::doGetFiles))(top, files, recursive, msg, ec);
    }

    /// Makes the paths of a tree stand for themselves.
    void keepAsTheyAre(const std::vector<opc::ustring>& paths) {
        for (const opc::ustring& path : paths) {
            platform.make_native_form.at(path).returns(path);
            platform.make_generic_form.at(path).returns(path);
        }
    }

    /// top: a, sub (b, deep (c), d), e
    void scriptTree() {
        keepAsTheyAre({u"top", u"top/a", u"top/sub", u"top/sub/b", u"top/sub/deep", u"top/sub/deep/c",
                       u"top/sub/d", u"top/e"});
        platform.folders[u"top"] = {file(u"a"), folder(u"sub"), file(u"e")};
        platform.folders[u"top/sub"] = {file(u"b"), folder(u"deep"), link(u"d")};
        platform.folders[u"top/sub/deep"] = {file(u"c")};
    }
};

TEST_P(LocalListing, OpensTheNativeFormAndNormalizesWhatItFinds) {
    platform.folders[u"native(top)"] = {file(u"a")};
    list(u"top", false);
    EXPECT_EQ(files, Files{u"generic(native(native(top)/a))"});
    EXPECT_EQ(platform.calls(),
              (Calls{"make_native_form('top', true)", "openListing('native(top)', 0)",
                     "status('native(top)/a')", "make_native_form('native(top)/a', true)",
                     "make_generic_form('native(native(top)/a)')", "closeListing('native(top)')"}));
    expectNothingReported();
}

TEST_P(LocalListing, DescendsIntoTheNormalizedPathOfASubfolder) {
    platform.folders[u"native(top)"] = {folder(u"sub")};
    list(u"top", true);
    EXPECT_EQ(platform.callsTo({"openListing"}),
              (Calls{"openListing('native(top)', 0)",
                     "openListing('native(generic(native(native(top)/sub)))', 0)"}));
    EXPECT_EQ(files, Files{});
}

TEST_P(LocalListing, OfNoFolderIsEmptyAndNoFailure) {
    files = {u"before"};
    list(u"", true);
    EXPECT_EQ(files, Files{u"before"});
    EXPECT_EQ(platform.calls(), Calls{});
    expectNothingReported();
}

TEST_P(LocalListing, OfAnEmptyFolderIsEmpty) {
    list(u"top", true);
    EXPECT_EQ(files, Files{});
    expectNothingReported();
}

TEST_P(LocalListing, AppendsToWhatIsThere) {
    scriptTree();
    files = {u"before"};
    list(u"top", false);
    EXPECT_EQ(files, (Files{u"before", u"top/a", u"top/e"}));
}

TEST_P(LocalListing, KeepsTheOrderOfThePlatform) {
    keepAsTheyAre({u"top", u"top/z", u"top/a", u"top/m"});
    platform.folders[u"top"] = {file(u"z"), link(u"a"), file(u"m")};
    list(u"top", false);
    EXPECT_EQ(files, (Files{u"top/z", u"top/a", u"top/m"}));
}

TEST_P(LocalListing, PutsTheContentsOfASubfolderInItsPlace) {
    scriptTree();
    list(u"top", true);
    EXPECT_EQ(files, (Files{u"top/a", u"top/sub/b", u"top/sub/deep/c", u"top/sub/d", u"top/e"}));
    expectNothingReported();
}

TEST_P(LocalListing, StaysInTheTopFolderUnlessToldToDescend) {
    scriptTree();
    list(u"top", false);
    EXPECT_EQ(files, (Files{u"top/a", u"top/e"}));
    EXPECT_EQ(platform.callsTo({"openListing"}), Calls{"openListing('top', 0)"});
}

TEST_P(LocalListing, NeverDescendsIntoTheFolderItselfOrItsParent) {
    keepAsTheyAre({u"top", u"top/a"});
    platform.folders[u"top"] = {folder(u"."), folder(u".."), file(u"a")};
    list(u"top", true);
    EXPECT_EQ(files, Files{u"top/a"});
    EXPECT_EQ(platform.callsTo({"openListing"}), Calls{"openListing('top', 0)"});
}

TEST_P(LocalListing, DescendsIntoFoldersWhoseNamesOnlyBeginLikeThose) {
    keepAsTheyAre({u"top", u"top/...", u"top/.a", u"top/..b"});
    platform.folders[u"top"] = {folder(u"..."), folder(u".a"), folder(u"..b")};
    list(u"top", true);
    EXPECT_EQ(platform.callsTo({"openListing"}),
              (Calls{"openListing('top', 0)", "openListing('top/...', 0)", "openListing('top/.a', 0)",
                     "openListing('top/..b', 0)"}));
}

TEST_P(LocalListing, ListsFilesAndLinksOfTheseNamesToo) {
    keepAsTheyAre({u"top", u"top/.", u"top/.."});
    platform.folders[u"top"] = {file(u"."), link(u"..")};
    list(u"top", true);
    EXPECT_EQ(files, (Files{u"top/.", u"top/.."}));
}

TEST_P(LocalListing, PassesOverEveryOtherKind) {
    platform.folders[u"native(top)"] = {
        {u"not found", file_status::file_not_found}, {u"block", file_status::block_file},
        {u"character", file_status::character_file}, {u"fifo", file_status::fifo_file},
        {u"socket", file_status::socket_file},       {u"unknown", file_status::unknown_file},
    };
    list(u"top", true);
    EXPECT_EQ(files, Files{});
    EXPECT_EQ(platform.callsTo({"status"}).size(), 6u);
    EXPECT_EQ(platform.callsTo({"openListing"}).size(), 1u);
    expectNothingReported();
}

TEST_P(LocalListing, GoesByTheStatusOfTheEntry) {
    keepAsTheyAre({u"top", u"top/a"});
    platform.folders[u"top"] = {folder(u"a")};
    platform.entryStatus.at(u"top/a").returns(scripted::aLink());
    list(u"top", true);
    EXPECT_EQ(files, Files{u"top/a"});
}

TEST_P(LocalListing, ReportsAFolderThatDoesNotOpen) {
    platform.openListing.throws(PathNotFound(u"top"));
    files = {u"before"};
    list(u"top", true);
    EXPECT_EQ(files, Files{u"before"});
    expectReported(errc::no_such_file_or_directory, "Path not found: user(top)");
}

TEST_P(LocalListing, KeepsWhatItFoundBeforeAnEntryFailed) {
    scriptTree();
    platform.entryStatus.at(u"top/e").throws(AccessDenied(u"top/e"));
    list(u"top", true);
    EXPECT_EQ(files, (Files{u"top/a", u"top/sub/b", u"top/sub/deep/c", u"top/sub/d"}));
    expectReported(errc::permission_denied, "Access denied: user(top/e)");
}

TEST_P(LocalListing, KeepsWhatItFoundBeforeMovingOnFailed) {
    scriptTree();
    platform.increment.at(u"top").throws(AccessDenied(u"top"));
    list(u"top", true);
    EXPECT_EQ(files, Files{u"top/a"});
    expectReported(errc::permission_denied, "Access denied: user(top)");
}

TEST_P(LocalListing, ReportsAnEntryOfAnEndedListingAsInvalidOperation) {
    scriptTree();
    platform.entryStatus.at(u"top/a").throws(fl::filesystem::InvalidOperation(u""));
    list(u"top", true);
    expectReported(errc::operation_not_supported, "Invalid operation");
}

TEST_P(LocalListing, GoesOnAfterASubfolderThatDoesNotOpenAndStillReportsIt) {
    scriptTree();
    platform.openListing.at(u"top/sub").throws(AccessDenied(u"top/sub"));
    list(u"top", true);
    EXPECT_EQ(files, (Files{u"top/a", u"top/e"}));
    expectReported(errc::permission_denied, "Access denied: user(top/sub)");
}

TEST_P(LocalListing, GoesOnAtEveryLevelAfterAFailureBelow) {
    scriptTree();
    platform.openListing.at(u"top/sub/deep").throws(AccessDenied(u"top/sub/deep"));
    list(u"top", true);
    EXPECT_EQ(files, (Files{u"top/a", u"top/sub/b", u"top/sub/d", u"top/e"}));
    expectReported(errc::permission_denied, "Access denied: user(top/sub/deep)");
}

TEST_P(LocalListing, ReportsTheLastOfSeveralFailures) {
    scriptTree();
    platform.openListing.at(u"top/sub/deep").throws(AccessDenied(u"top/sub/deep"));
    platform.entryStatus.at(u"top/e").throws(PathNotFound(u"top/e"));
    list(u"top", true);
    expectReported(errc::no_such_file_or_directory, "Path not found: user(top/e)");
}

TEST_P(LocalListing, ClosesEveryListingAlsoAfterAFailure) {
    scriptTree();
    platform.entryStatus.at(u"top/sub/deep/c").throws(AccessDenied(u""));
    list(u"top", true);
    EXPECT_EQ(platform.callsTo({"openListing", "closeListing"}),
              (Calls{"openListing('top', 0)", "openListing('top/sub', 0)", "openListing('top/sub/deep', 0)",
                     "closeListing('top/sub/deep')", "closeListing('top/sub')", "closeListing('top')"}));
}

INSTANTIATE_TEST_SUITE_P(Of, LocalListing, testing::Values(Kind::itself, Kind::derived), [](const auto& row) {
    return row.param == Kind::itself ? "ItsOwn" : "ADerivedClass";
});

class OverriddenListing : public LocalContract {
protected:
    Files files;
};

/// Lists subfolders in its own way, and normalizes so too.
class OwnListing : public contract::OpenLocalOps {
public:
    bool throws = false;

    void listAsLocal(const opc::ustring& top, Files& files, std::string& msg, boost::system::error_code& ec) {
        LocalFileSystemOps::doGetFiles(top, files, true, msg, ec);
    }

protected:
    void doGetFiles(const opc::ustring& top, Files& files, bool recursive, std::string&,
                    boost::system::error_code&) override {
        if (throws) {
            throw AccessDenied(top);
        }
        files.push_back(u"own(" + top + (recursive ? u", recursive)" : u")"));
    }
    opc::ustring doNormalizePath(const opc::ustring& path, std::string&,
                                 boost::system::error_code&) override {
        return u"<" + path + u">";
    }
};

TEST_F(OverriddenListing, DescendsAndNormalizesThroughTheVirtualOperations) {
    platform.folders[u"native(top)"] = {file(u"a"), folder(u"sub"), file(u"b")};
    OwnListing own;
    own.listAsLocal(u"top", files, msg, ec);
    EXPECT_EQ(files, (Files{u"<native(top)/a>", u"own(<native(top)/sub>, recursive)", u"<native(top)/b>"}));
}

TEST_F(OverriddenListing, EndsWithWhatAnOverrideLetsEscape) {
    platform.folders[u"native(top)"] = {file(u"a"), folder(u"sub"), file(u"b")};
    OwnListing own;
    own.throws = true;
    own.listAsLocal(u"top", files, msg, ec);
    EXPECT_EQ(files, Files{u"<native(top)/a>"});
    expectReported(errc::permission_denied, "Access denied: user(<native(top)/sub>)");
}

}  // namespace
