#include "tests/e2e/LocalTest.hpp"

namespace test {

namespace {

class LocalRemove : public LocalTest {
protected:
    using LocalTest::LocalTest;

    void SetUp() override {
        makeFile(tree / "file", "text");
        makeFolder(tree / "empty");
        makeFolder(tree / "full");
        makeFile(tree / "full/inner", "text");
        makeFolder(tree / "full/deeper");
        makeLink("full", tree / "link");
        makeLink("nowhere", tree / "dangling");
        makePipe(tree / "pipe");
    }

    /// Both removals fail in this way, in both styles, and change nothing.
    void refuseBoth(const opc::ustring& path, errc::errc_t code, const std::string& what) {
        const TreeSnapshot before = snapshot(tree.path());
        EXPECT_TRUE(fails([&](auto&... ec) { ops.remove(path, ec...); }, code, "remove failed: " + what));
        EXPECT_TRUE(
            fails([&](auto&... ec) { ops.removeAll(path, ec...); }, code, "removeAll failed: " + what));
        EXPECT_EQ(before, snapshot(tree.path()));
    }
};

TEST_F(LocalRemove, TakesAFileALinkItselfAPipeOrAnEmptyFolder) {
    for (const char* const name : {"file", "link", "dangling", "pipe", "empty"}) {
        ops.remove(tree.text(name));
        EXPECT_FALSE(isThere(tree / name)) << name;
    }
    EXPECT_TRUE(isThere(tree / "full/inner"));
}

TEST_F(LocalRemove, OfAllTakesTheSame) {
    for (const char* const name : {"file", "link", "dangling", "pipe", "empty"}) {
        ops.removeAll(tree.text(name));
        EXPECT_FALSE(isThere(tree / name)) << name;
    }
    EXPECT_TRUE(isThere(tree / "full/inner"));
}

TEST_F(LocalRemove, OfAFullFolderFails) {
    for (const char* const name : {"full", "full/"}) {
        EXPECT_TRUE(fails([&](auto&... ec) { ops.remove(tree.text(name), ec...); }, errc::directory_not_empty,
                          "remove failed: Directory not empty: " + (tree / name)));
    }
    EXPECT_TRUE(isThere(tree / "full/inner"));
}

TEST_F(LocalRemove, OfAllTakesAFullFolder) {
    ops.removeAll(tree.text("full"));
    EXPECT_FALSE(isThere(tree / "full"));
    EXPECT_TRUE(isThere(tree / "link"));
}

TEST_F(LocalRemove, OfAFolderTakesItAlsoWithATrailingSeparator) {
    ops.remove(tree.text("empty/"));
    ops.removeAll(tree.text("full//"));
    EXPECT_FALSE(isThere(tree / "empty"));
    EXPECT_FALSE(isThere(tree / "full"));
}

TEST_F(LocalRemove, OfALinkWithATrailingSeparatorTakesTheLinkAndNotWhatItPointsTo) {
    const TreeSnapshot full = snapshot(tree / "full");
    ops.removeAll(tree.text("link/"));
    EXPECT_FALSE(isThere(tree / "link"));
    EXPECT_EQ(full, snapshot(tree / "full"));
    makeLink("full", tree / "link");
    ops.remove(tree.text("link/"));
    EXPECT_FALSE(isThere(tree / "link"));
    EXPECT_EQ(full, snapshot(tree / "full"));
}

TEST_F(LocalRemove, OfALinkBelowTakesTheLinkAndNotWhatItPointsTo) {
    makeFolder(tree / "top");
    makeLink("../full", tree / "top/toFolder");
    makeLink((tree / "file").c_str(), tree / "top/toFile");
    makeLink("..", tree / "top/up");
    const TreeSnapshot full = snapshot(tree / "full");
    ops.removeAll(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
    EXPECT_EQ(full, snapshot(tree / "full"));
    EXPECT_EQ("text", contentOf(tree / "file"));
}

TEST_F(LocalRemove, ThroughALinkInTheMiddleOfThePathReachesWhatIsMeant) {
    ops.removeAll(tree.text("link/deeper"));
    EXPECT_FALSE(isThere(tree / "full/deeper"));
    EXPECT_TRUE(isThere(tree / "full/inner"));
}

TEST_F(LocalRemove, OfTheFolderOneStandsInOrOfTheOneAboveIsRefused) {
    for (const char* const name : {"full/.", "full/..", "full/./", "full/..//", "link/.", "."}) {
        refuseBoth(tree.text(name), errc::invalid_argument, "Invalid argument: " + (tree / name));
    }
    runInChild([&] {
        ASSERT_EQ(0, ::chdir((tree / "full").c_str()));
        refuseBoth(u".", errc::invalid_argument, "Invalid argument: .");
        refuseBoth(u"..", errc::invalid_argument, "Invalid argument: ..");
        refuseBoth(u"./", errc::invalid_argument, "Invalid argument: ./");
    });
}

TEST_F(LocalRemove, OfNamesThatOnlyLookLikeDotsWorks) {
    for (const char* const name : {"...", "..a", ".a", "a..", "a."}) {
        makeFile(tree / name);
        ops.remove(tree.text(name));
        EXPECT_FALSE(isThere(tree / name));
        makeFolder(tree / name);
        makeFile(tree / name + "/x");
        ops.removeAll(tree.text(name));
        EXPECT_FALSE(isThere(tree / name));
    }
}

TEST_F(LocalRemove, OfNothingFails) {
    refuseBoth(tree.text("missing"), errc::no_such_file_or_directory,
               "Path not found: " + (tree / "missing"));
    refuseBoth(tree.text("missing/x"), errc::no_such_file_or_directory,
               "Path not found: " + (tree / "missing/x"));
    refuseBoth(tree.text("dangling/x"), errc::no_such_file_or_directory,
               "Path not found: " + (tree / "dangling/x"));
    refuseBoth(tree.text("file/x"), errc::not_a_directory, "Not a directory: " + (tree / "file/x"));
    refuseBoth(u"", errc::no_such_file_or_directory, "Path not found");
}

TEST_F(LocalRemove, OfAPathWithANulTakesNothing) {
    const TreeSnapshot before = snapshot(tree.path());
    const opc::ustring path = tree.text("full") + opc::ustring(u"\0x", 2);
    EXPECT_TRUE(reports([&](auto& ec) { ops.remove(path, ec); }, make_error_code(errc::invalid_argument)));
    EXPECT_TRUE(reports([&](auto& ec) { ops.removeAll(path, ec); }, make_error_code(errc::invalid_argument)));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(LocalRemove, TakesEveryName) {
    for (const OddName& name : oddNames()) {
        makeFile(tree / ("full/" + name.onDisk));
        ops.remove(tree.text(u"full/" + name.asText));
        EXPECT_FALSE(isThere(tree / ("full/" + name.onDisk))) << name.onDisk;
        makeFolder(tree / ("full/deeper/" + name.onDisk));
    }
    ops.removeAll(tree.text("full"));
    EXPECT_FALSE(isThere(tree / "full"));
}

/// With many items, where the host makes them quickly.
class LocalRemoveAtScale : public LocalRemove {
protected:
    LocalRemoveAtScale() : LocalRemove(fastFolder()) {}
};

TEST_F(LocalRemoveAtScale, OfAllTakesLargeFolders) {
    for (int number = 0; number < 5'000; ++number) {
        makeFile(tree / ("full/file-with-a-name-of-some-length-" + std::to_string(number)));
    }
    ops.removeAll(tree.text("full"));
    EXPECT_FALSE(isThere(tree / "full"));
}

TEST_F(LocalRemove, OfAllTakesWhatIsReadOnly) {
    setMode(tree / "full/inner", 0);
    ops.removeAll(tree.text("full"));
    EXPECT_FALSE(isThere(tree / "full"));
}

TEST_F(LocalRemove, OfAllGoesOnAfterAFailureAndReportsTheFirst) {
    runAsOrdinaryUser([] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        makeFolder(own / "top");
        for (const char* const folder : {"top/a", "top/locked", "top/z"}) {
            makeFolder(own / folder);
            makeFile(own / folder + "/file");
        }
        setMode(own / "top/locked", 0500);
        boost::system::error_code ec;
        local.removeAll(own.text("top"), ec);
        EXPECT_EQ(make_error_code(errc::permission_denied), ec);
        EXPECT_EQ(
            (TreeSnapshot{
                {"top", "folder 0755"}, {"top/locked", "folder 0500"}, {"top/locked/file", "file 0644 ''"}}),
            snapshot(own.path()));
        setMode(own / "top/locked", 0700);
        EXPECT_NO_THROW(local.removeAll(own.text("top")));
    });
}

TEST_F(LocalRemove, WhereNobodyMayWriteFails) {
    runAsOrdinaryUser([] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        makeFolder(own / "locked");
        makeFile(own / "locked/file");
        setMode(own / "locked", 0500);
        EXPECT_TRUE(fails([&](auto&... ec) { local.remove(own.text("locked/file"), ec...); },
                          errc::permission_denied, "remove failed: Access denied: " + (own / "locked/file")));
        EXPECT_TRUE(fails([&](auto&... ec) { local.removeAll(own.text("locked/file"), ec...); },
                          errc::permission_denied,
                          "removeAll failed: Access denied: " + (own / "locked/file")));
    });
}

TEST_F(LocalRemoveAtScale, OfAllNeedsFewDescriptorsForAnyDepth) {
    makeFolder(tree / "top");
    makeChain(tree / "top", "ab", 900);
    runInChild([&] {
        limitResource(RLIMIT_NOFILE, 256);
        ops.removeAll(tree.text("top"));
    });
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(LocalRemoveAtScale, OfAllGoesBelowTheLimitOfOnePath) {
    makeFolder(tree / "top");
    makeChain(tree / "top", "ab", 3'000);
    ops.removeAll(tree.text("top"));
    EXPECT_FALSE(isThere(tree / "top"));
}

TEST_F(LocalRemoveAtScale, ReachesBelowTheLimitOfOnePath) {
    makeChain(tree.path(), "ab", 3'000);
    const std::string last = chainPath("ab", 3'000);
    ops.remove(tree.text(last + "/leaf"));
    EXPECT_FALSE(ops.exists(tree.text(last + "/leaf")));
    ops.remove(tree.text(last));
    EXPECT_FALSE(ops.exists(tree.text(last)));
    ops.removeAll(tree.text(chainPath("ab", 2'000)));
    EXPECT_FALSE(ops.exists(tree.text(chainPath("ab", 2'000))));
    EXPECT_TRUE(ops.isFolder(tree.text(chainPath("ab", 1'999))));
}

}  // namespace
}  // namespace test
