#include "tests/e2e/LocalTest.hpp"

#include <sys/stat.h>

namespace test {

namespace {

class LocalFolders : public LocalTest {
protected:
    using LocalTest::LocalTest;

    void SetUp() override {
        makeFile(tree / "file", "text");
        makeFolder(tree / "folder");
        makeLink("folder", tree / "link");
        makeLink("nowhere", tree / "dangling");
        before = snapshot(tree.path());
    }

    /// createFolder fails, in both styles, and changes nothing.
    void refuseOne(const std::string& path, errc::errc_t code, const std::string& what) {
        EXPECT_TRUE(fails([&](auto&... ec) { ops.createFolder(text(path), ec...); }, code,
                          "createFolder failed: " + what + ": " + path));
        EXPECT_EQ(before, snapshot(tree.path()));
    }

    void refuseMany(const std::string& path, errc::errc_t code, const std::string& what) {
        EXPECT_TRUE(fails([&](auto&... ec) { ops.createFolders(text(path), ec...); }, code,
                          "createFolders failed: " + what + ": " + path));
        EXPECT_EQ(before, snapshot(tree.path()));
    }

    TreeSnapshot before;
};

TEST_F(LocalFolders, AreMadeOneByOne) {
    ops.createFolder(tree.text("new"));
    ops.createFolder(tree.text("new/inner/"));
    ops.createFolder(tree.text("link/behind"));
    EXPECT_TRUE(ops.isFolder(tree.text("new/inner")));
    EXPECT_TRUE(ops.isFolder(tree.text("folder/behind")));
}

TEST_F(LocalFolders, AreAsOpenAsTheMaskAllows) {
    runInChild([&] {
        ::umask(027);
        ops.createFolder(tree.text("one"));
        ops.createFolders(tree.text("two/three"));
        EXPECT_EQ(0750U, modeOf(tree / "one"));
        EXPECT_EQ(0750U, modeOf(tree / "two"));
        EXPECT_EQ(0750U, modeOf(tree / "two/three"));
    });
}

TEST_F(LocalFolders, OneIsNotMadeWhereAnythingStands) {
    for (const char* const name : {"folder", "folder/", "file", "file/", "link", "link/", "dangling", "."}) {
        refuseOne(tree / name, errc::file_exists, "File exists");
    }
    EXPECT_FALSE(isThere(tree / "nowhere"));
}

TEST_F(LocalFolders, OneIsNotMadeWithoutItsParent) {
    refuseOne(tree / "missing/new", errc::no_such_file_or_directory, "Path not found");
    refuseOne(tree / "dangling/new", errc::no_such_file_or_directory, "Path not found");
    refuseOne(tree / "file/new", errc::not_a_directory, "Not a directory");
}

TEST_F(LocalFolders, AreNotMadeAtAnEmptyPath) {
    EXPECT_TRUE(fails([&](auto&... ec) { ops.createFolder(u"", ec...); }, errc::no_such_file_or_directory,
                      "createFolder failed: Path not found"));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.createFolders(u"", ec...); }, errc::no_such_file_or_directory,
                      "createFolders failed: Path not found"));
}

TEST_F(LocalFolders, AreNotMadeAtAPathThatEndsInANul) {
    const opc::ustring path = tree.text("new") + opc::ustring(u"\0x", 2);
    EXPECT_TRUE(
        reports([&](auto& ec) { ops.createFolder(path, ec); }, make_error_code(errc::invalid_argument)));
    EXPECT_TRUE(
        reports([&](auto& ec) { ops.createFolders(path, ec); }, make_error_code(errc::invalid_argument)));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(LocalFolders, AllThatAreMissingAreMade) {
    ops.createFolders(tree.text("a/b/c/d"));
    EXPECT_TRUE(ops.isFolder(tree.text("a/b/c/d")));
    ops.createFolders(tree.text("link/e/f"));
    EXPECT_TRUE(ops.isFolder(tree.text("folder/e/f")));
}

TEST_F(LocalFolders, ThatExistAreFine) {
    for (const char* const name :
         {"folder", "folder/", "link", "link/", ".", "folder/..", "", "/", "folder//."}) {
        EXPECT_NO_THROW(ops.createFolders(tree.text(name))) << name;
    }
    EXPECT_NO_THROW(ops.createFolders(u"/"));
    EXPECT_NO_THROW(ops.createFolders(u"."));
    EXPECT_NO_THROW(ops.createFolders(u".."));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(LocalFolders, DotsAndRepeatedSeparatorsInAPathAreNoFoldersToMake) {
    ops.createFolders(tree.text("a//b/./c///"));
    ops.createFolders(tree.text("folder/../g/h"));
    EXPECT_TRUE(ops.isFolder(tree.text("a/b/c")));
    EXPECT_TRUE(ops.isFolder(tree.text("g/h")));
}

TEST_F(LocalFolders, SomethingElseInTheWayIsNoFolder) {
    refuseMany(tree / "file", errc::not_a_directory, "Not a directory");
    refuseMany(tree / "file/a/b", errc::not_a_directory, "Not a directory");
    refuseMany(tree / "dangling", errc::not_a_directory, "Not a directory");
}

TEST_F(LocalFolders, BelowALinkToNowhereAreNotMade) {
    EXPECT_TRUE(ops.isSymlink(tree.text("dangling")));
    boost::system::error_code ec;
    ops.createFolders(tree.text("dangling/a"), ec);
    EXPECT_TRUE(ec.failed());
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(LocalFolders, WithTooLongANameFail) {
    refuseOne(tree / std::string(256, 'x'), errc::filename_too_long, "File name too long");
    refuseMany(tree / std::string(256, 'x'), errc::filename_too_long, "File name too long");
}

TEST_F(LocalFolders, WhereNobodyMayWriteFail) {
    runAsOrdinaryUser([] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        makeFolder(own / "locked", 0500);
        EXPECT_TRUE(fails([&](auto&... ec) { local.createFolder(own.text("locked/x"), ec...); },
                          errc::permission_denied,
                          "createFolder failed: Access denied: " + (own / "locked/x")));
        boost::system::error_code ec;
        local.createFolders(own.text("locked/x/y"), ec);
        EXPECT_EQ(errc::permission_denied, ec);
    });
}

TEST_F(LocalFolders, ThoseMadeBeforeAFailureStay) {
    boost::system::error_code ec;
    ops.createFolders(tree.text("a/b/" + std::string(256, 'x') + "/c"), ec);
    EXPECT_EQ(errc::filename_too_long, ec);
    EXPECT_TRUE(isThere(tree / "a/b"));
}

TEST_F(LocalFolders, OfEveryNameAreMade) {
    for (const OddName& name : oddNames()) {
        ops.createFolder(tree.text(u"folder/" + name.asText));
        EXPECT_TRUE(isThere(tree / ("folder/" + name.onDisk))) << name.onDisk;
        ops.createFolders(tree.text(u"more/" + name.asText + u"/in"));
        EXPECT_TRUE(isThere(tree / ("more/" + name.onDisk + "/in"))) << name.onDisk;
    }
}

/// With many items, where the host makes them quickly.
class LocalFoldersAtScale : public LocalFolders {
protected:
    LocalFoldersAtScale() : LocalFolders(fastFolder()) {}
};

TEST_F(LocalFoldersAtScale, AreMadeBelowTheLimitOfOnePath) {
    const std::string chain = chainPath("folder-with-a-long-name", 400);
    ops.createFolders(tree.text(chain));
    EXPECT_TRUE(ops.isFolder(tree.text(chain)));
    EXPECT_NO_THROW(ops.createFolders(tree.text(chain)));
    ops.createFolder(tree.text(chain + "/one"));
    EXPECT_TRUE(ops.isFolder(tree.text(chain + "/one")));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.createFolder(tree.text(chain + "/one"), ec...); },
                      errc::file_exists, "createFolder failed: File exists: " + (tree / (chain + "/one"))));
}

}  // namespace
}  // namespace test
