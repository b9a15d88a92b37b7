// Listing a folder with the virtual back end.

#include "tests/contract/VirtualContract.hpp"

using contract::kFile;
using contract::kFolder;
using contract::storageFailure;
using contract::VirtualContract;
using scripted::storedFile;
using scripted::storedFolder;
namespace errc = boost::system::errc;

namespace {

using Files = std::vector<opc::ustring>;

class VirtualListing : public VirtualContract {
protected:
    Files files;

    VirtualListing() { place(u"top", kFolder); }

    void list(bool recursive) { ops.doGetFiles(u"top", files, recursive, msg, ec); }

    void scriptEntries() {
        storage.entries[u"canonical(top)"] = {storedFile(u"top/z"), storedFolder(u"top/sub"),
                                              storedFile(u"top/a"), storedFile(u"top/m")};
        storage.entriesBelow[u"canonical(top)"] = {storedFile(u"top/z"), storedFolder(u"top/sub"),
                                                   storedFile(u"top/sub/b"), storedFile(u"top/a")};
    }
};

TEST_F(VirtualListing, LooksTheFolderUpAndListsAllOfIt) {
    list(false);
    EXPECT_EQ(platform.calls(), (Calls{"CanonicalAbsoluteIRI('top')", "vfs::exists('canonical(top)'@S)",
                                       "listAll('canonical(top)'@S, '')", "~Listing('canonical(top)'@S)"}));
    EXPECT_EQ(files, Files{});
    expectNothingReported();
}

TEST_F(VirtualListing, ListsAllBelowWhenItIsRecursive) {
    list(true);
    EXPECT_EQ(platform.calls(),
              (Calls{"CanonicalAbsoluteIRI('top')", "vfs::exists('canonical(top)'@S)",
                     "listAllRecursive('canonical(top)'@S, '')", "~Listing('canonical(top)'@S)"}));
    expectNothingReported();
}

TEST_F(VirtualListing, GivesTheFilesInTheOrderOfTheStorageAndNoFolder) {
    scriptEntries();
    list(false);
    EXPECT_EQ(files, (Files{u"top/z", u"top/a", u"top/m"}));
    expectNothingReported();
}

TEST_F(VirtualListing, RecursiveGivesTheFilesOfTheWholeTreeAndNoFolder) {
    scriptEntries();
    list(true);
    EXPECT_EQ(files, (Files{u"top/z", u"top/sub/b", u"top/a"}));
    EXPECT_EQ(platform.callsTo({"listAll"}), Calls{});
    expectNothingReported();
}

TEST_F(VirtualListing, LooksNothingUpForItsEntries) {
    scriptEntries();
    list(true);
    EXPECT_EQ(platform.callsTo({"vfs::exists", "CanonicalAbsoluteIRI"}).size(), 2u);
}

TEST_F(VirtualListing, AppendsToWhatIsThere) {
    scriptEntries();
    files = {u"before"};
    list(false);
    list(false);
    EXPECT_EQ(files, (Files{u"before", u"top/z", u"top/a", u"top/m", u"top/z", u"top/a", u"top/m"}));
}

TEST_F(VirtualListing, OfAFileIsReportedAsNotFound) {
    files = {u"before"};
    place(u"file", kFile);
    for (const bool recursive : {false, true}) {
        ops.doGetFiles(u"file", files, recursive, msg, ec);
        expectNotFound("file");
        EXPECT_EQ(files, Files{u"before"});
    }
    EXPECT_EQ(platform.callsTo({"listAll", "listAllRecursive"}), Calls{});
}

TEST_F(VirtualListing, OfNothingIsReportedAsNotFound) {
    ops.doGetFiles(u"missing", files, true, msg, ec);
    expectNotFound("missing");
    EXPECT_EQ(platform.callsTo({"listAll", "listAllRecursive"}), Calls{});
}

TEST_F(VirtualListing, AnEmptyPathIsLeftToTheStorage) {
    ops.doGetFiles(u"", files, true, msg, ec);
    expectNotFound("");
}

TEST_F(VirtualListing, KeepsWhatItFoundBeforeAFailureAndLetsTheListingGo) {
    scriptEntries();
    files = {u"before"};
    storage.next.at(u"top/m").throws(storageFailure());
    list(false);
    EXPECT_EQ(files, (Files{u"before", u"top/z", u"top/a"}));
    expectReported(errc::permission_denied, "words: user(p)");
    EXPECT_EQ(platform.callsTo({"~Listing"}), Calls{"~Listing('canonical(top)'@S)"});
}

TEST_F(VirtualListing, ReportsAListingThatDoesNotStart) {
    storage.listAll.throws(storageFailure());
    files = {u"before"};
    list(false);
    EXPECT_EQ(files, Files{u"before"});
    expectReported(errc::permission_denied, "words: user(p)");
}

}  // namespace
