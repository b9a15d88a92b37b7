#include "tests/e2e/LocalTest.hpp"

namespace test {

namespace {

class LocalLinks : public LocalTest {
protected:
    using LocalTest::LocalTest;
};

TEST_F(LocalLinks, HoldTheirTargetWithBackslashesForSlashes) {
    ops.createSymlink(u"a/b/d", tree.text("link"));
    EXPECT_EQ("a\\b\\d", linkTextOf(tree / "link"));
    ops.createSymlink(u"//x/", tree.text("other"));
    EXPECT_EQ("\\\\x\\", linkTextOf(tree / "other"));
}

TEST_F(LocalLinks, HoldATargetWithoutSlashesToTheLetter) {
    for (const char* const target : {"file", "..", ".", "a\\b", "\xC3\xA9", " ", "-rf"}) {
        const TempTree place;
        ops.createSymlink(text(target), place.text("link"));
        EXPECT_EQ(target, linkTextOf(place / "link"));
        EXPECT_EQ(text(target), ops.getLinkTarget(place.text("link")));
    }
}

TEST_F(LocalLinks, AreMadeWithoutALookAtTheTarget) {
    makeFolder(tree / "folder");
    ops.createSymlink(u"nowhere", tree.text("dangling"));
    ops.createSymlink(u"folder", tree.text("toFolder"));
    ops.createSymlink(u"self", tree.text("self"));
    for (const char* const name : {"dangling", "toFolder", "self"}) {
        EXPECT_TRUE(ops.isSymlink(tree.text(name)));
        EXPECT_TRUE(ops.exists(tree.text(name)));
    }
}

TEST_F(LocalLinks, AreNotMadeWhereAnythingStands) {
    makeFile(tree / "file", "text");
    makeFolder(tree / "folder");
    makeLink("nowhere", tree / "dangling");
    const TreeSnapshot before = snapshot(tree.path());
    for (const char* const name : {"file", "folder", "folder/", "dangling", "dangling/"}) {
        EXPECT_TRUE(fails([&](auto&... ec) { ops.createSymlink(u"target", tree.text(name), ec...); },
                          errc::file_exists, "createSymlink failed: File exists: " + (tree / name)));
    }
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(LocalLinks, AreNotMadeWithoutAParentAPathOrATarget) {
    makeFile(tree / "file");
    EXPECT_TRUE(fails([&](auto&... ec) { ops.createSymlink(u"target", tree.text("missing/link"), ec...); },
                      errc::no_such_file_or_directory,
                      "createSymlink failed: Path not found: " + (tree / "missing/link")));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.createSymlink(u"target", tree.text("file/link"), ec...); },
                      errc::not_a_directory,
                      "createSymlink failed: Not a directory: " + (tree / "file/link")));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.createSymlink(u"target", u"", ec...); },
                      errc::no_such_file_or_directory, "createSymlink failed: Path not found"));
    EXPECT_TRUE(reports([&](auto& ec) { ops.createSymlink(u"", tree.text("link"), ec); },
                        make_error_code(errc::no_such_file_or_directory)));
    EXPECT_FALSE(isThere(tree / "link"));
}

TEST_F(LocalLinks, ANulInTheTargetOrThePathIsRefused) {
    const opc::ustring nul(u"a\0b", 3);
    EXPECT_TRUE(reports([&](auto& ec) { ops.createSymlink(nul, tree.text("link"), ec); },
                        make_error_code(errc::invalid_argument)));
    EXPECT_TRUE(reports([&](auto& ec) { ops.createSymlink(u"target", tree.text(nul), ec); },
                        make_error_code(errc::invalid_argument)));
    EXPECT_EQ(TreeSnapshot(), snapshot(tree.path()));
}

TEST_F(LocalLinks, TellTheirTargetTidied) {
    makeLink("a//b/", tree / "link");
    makeLink("/", tree / "toRoot");
    makeLink("../x/./y", tree / "dots");
    EXPECT_EQ(u"a/b", ops.getLinkTarget(tree.text("link")));
    EXPECT_EQ(u"/", ops.getLinkTarget(tree.text("toRoot")));
    EXPECT_EQ(u"../x/./y", ops.getLinkTarget(tree.text("dots")));
}

TEST_F(LocalLinks, TellTheirOwnTargetAlsoThroughATrailingSeparator) {
    makeFolder(tree / "folder");
    makeLink("folder", tree / "first");
    makeLink("first", tree / "second");
    EXPECT_EQ(u"first", ops.getLinkTarget(tree.text("second")));
    EXPECT_EQ(u"first", ops.getLinkTarget(tree.text("second/")));
}

TEST_F(LocalLinks, TellATargetOfAnyLength) {
    for (const std::size_t size : {1U, 255U, 256U, 1'023U, 1'024U, 4'000U, 4'095U}) {
        const TempTree place;
        makeLink(std::string(size, 'x'), place / "link");
        EXPECT_EQ(opc::ustring(size, u'x'), ops.getLinkTarget(place.text("link"))) << size;
    }
}

TEST_F(LocalLinks, OfTheSystemThatReportNoSizeAreRead) {
    EXPECT_EQ(text(linkTextOf("/proc/self/exe")), ops.getLinkTarget(u"/proc/self/exe"));
}

TEST_F(LocalLinks, WithATargetThatIsNotUtf8GoThereAndBack) {
    makeLink("caf\xE9/\xFF", tree / "link");
    EXPECT_EQ(u"caf\xDCE9/\xDCFF", ops.getLinkTarget(tree.text("link")));
    ops.createSymlink(u"caf\xDCE9", tree.text("made"));
    EXPECT_EQ("caf\xE9", linkTextOf(tree / "made"));
}

TEST_F(LocalLinks, OnlyALinkHasATarget) {
    makeFile(tree / "file");
    makeFolder(tree / "folder");
    for (const char* const name : {"file", "folder"}) {
        EXPECT_TRUE(fails([&](auto&... ec) { return ops.getLinkTarget(tree.text(name), ec...); },
                          errc::invalid_argument,
                          "getLinkTarget failed: Invalid argument: " + (tree / name)));
    }
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.getLinkTarget(tree.text("missing"), ec...); },
                      errc::no_such_file_or_directory,
                      "getLinkTarget failed: Path not found: " + (tree / "missing")));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.getLinkTarget(u"", ec...); },
                      errc::no_such_file_or_directory, "getLinkTarget failed: Path not found"));
}

/// With many items, where the host makes them quickly.
class LocalLinksAtScale : public LocalLinks {
protected:
    LocalLinksAtScale() : LocalLinks(fastFolder()) {}
};

TEST_F(LocalLinksAtScale, WorkBelowTheLimitOfOnePath) {
    makeChain(tree.path(), "folder-with-a-long-name", 300);
    const opc::ustring link = tree.text(chainPath("folder-with-a-long-name", 300) + "/link");
    ops.createSymlink(u"leaf", link);
    EXPECT_TRUE(ops.isSymlink(link));
    EXPECT_EQ(u"leaf", ops.getLinkTarget(link));
}

}  // namespace
}  // namespace test
