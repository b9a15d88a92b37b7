#include "tests/e2e/LocalTest.hpp"

namespace test {

namespace {

class LocalQuery : public LocalTest {
protected:
    using LocalTest::LocalTest;

    void SetUp() override {
        makeFile(tree / "file", "text");
        makeFolder(tree / "folder");
        makeLink("file", tree / "linkToFile");
        makeLink("folder", tree / "linkToFolder");
        makeLink("nowhere", tree / "dangling");
        makeLink("cycleB", tree / "cycleA");
        makeLink("cycleA", tree / "cycleB");
        makePipe(tree / "pipe");
    }

    /// The four answers as letters: (e)xists, f(i)le, f(o)lder, (s)ymlink; "-" for no, "!" behind one that
    /// failed.
    std::string answers(const opc::ustring& path) {
        std::string result;
        boost::system::error_code ec;
        const auto add = [&](bool answer, char yes) {
            result += answer ? yes : '-';
            result += ec.failed() ? "!" : "";
        };
        add(ops.exists(path, ec), 'e');
        add(ops.isFile(path, ec), 'i');
        add(ops.isFolder(path, ec), 'o');
        add(ops.isSymlink(path, ec), 's');
        return result;
    }

    std::string answers(std::string_view name) { return answers(tree.text(name)); }
};

TEST_F(LocalQuery, TellsKindsApartAndNeverFollowsALink) {
    EXPECT_EQ("ei--", answers("file"));
    EXPECT_EQ("e-o-", answers("folder"));
    EXPECT_EQ("e--s", answers("linkToFile"));
    EXPECT_EQ("e--s", answers("linkToFolder"));
    EXPECT_EQ("e--s", answers("dangling"));
    EXPECT_EQ("e--s", answers("cycleA"));
    EXPECT_EQ("e---", answers("pipe"));
    EXPECT_EQ("e---", answers(opc::ustring(u"/dev/null")));
}

TEST_F(LocalQuery, ATrailingSeparatorStillMeansTheItemItself) {
    EXPECT_EQ("e-o-", answers("folder/"));
    EXPECT_EQ("e-o-", answers("folder///"));
    EXPECT_EQ("e--s", answers("linkToFolder/"));
    EXPECT_EQ("e--s", answers("dangling/"));
    EXPECT_EQ("ei--", answers("file/"));
}

TEST_F(LocalQuery, RootsDotsAndRepeatedSeparatorsAreFolders) {
    EXPECT_EQ("e-o-", answers(opc::ustring(u"/")));
    EXPECT_EQ("e-o-", answers(opc::ustring(u"///")));
    EXPECT_EQ("e-o-", answers(opc::ustring(u".")));
    EXPECT_EQ("e-o-", answers(opc::ustring(u"..")));
    EXPECT_EQ("e-o-", answers("/folder//."));
    EXPECT_EQ("ei--", answers("folder/../file"));
    EXPECT_EQ("e-o-", answers("linkToFolder/."));  // a link in the middle is followed, as by the host
}

TEST_F(LocalQuery, NothingIsThereIsAnAnswerAndNoFailure) {
    EXPECT_EQ("----", answers("missing"));
    EXPECT_EQ("----", answers("missing/x"));
    EXPECT_EQ("----", answers("file/x"));
    EXPECT_EQ("----", answers("dangling/x"));
    EXPECT_EQ("----", answers(opc::ustring()));
    EXPECT_FALSE(ops.exists(tree.text("missing")));
    EXPECT_FALSE(ops.exists(opc::ustring()));
}

TEST_F(LocalQuery, AnEmptyNameIsNeverAskedAbout) {
    runInChild([&] {
        ASSERT_EQ(0, ::chdir(tree.path().c_str()));
        EXPECT_EQ("----", answers(opc::ustring()));
        EXPECT_EQ("ei--", answers(opc::ustring(u"file")));
    });
}

TEST_F(LocalQuery, ANameThatIsTooLongFails) {
    const std::string name = tree / std::string(256, 'x');
    const opc::ustring path = text(name);
    EXPECT_EQ("-!-!-!-!", answers(path));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.exists(path, ec...); }, errc::filename_too_long,
                      "exists failed: File name too long: " + name));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.isFile(path, ec...); }, errc::filename_too_long,
                      "isFile failed: File name too long: " + name));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.isFolder(path, ec...); }, errc::filename_too_long,
                      "isFolder failed: File name too long: " + name));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.isSymlink(path, ec...); }, errc::filename_too_long,
                      "isSymlink failed: File name too long: " + name));
}

TEST_F(LocalQuery, APathThroughACycleOfLinksFails) {
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.exists(tree.text("cycleA/x"), ec...); },
                      errc::invalid_argument, "exists failed: Invalid argument: " + (tree / "cycleA/x")));
}

TEST_F(LocalQuery, ANulIsRefusedAndNeverCutsThePath) {
    const opc::ustring path = tree.text("file") + opc::ustring(u"\0x", 2);
    EXPECT_EQ("-!-!-!-!", answers(path));
    EXPECT_TRUE(
        reports([&](auto& ec) { return ops.exists(path, ec); }, make_error_code(errc::invalid_argument)));
    EXPECT_TRUE(
        throws([&] { ops.exists(path); }, make_error_code(errc::invalid_argument),
               "exists failed: File name cannot be converted: " + (tree / "file")));  // what() ends there
}

TEST_F(LocalQuery, AnUnpairedSurrogateIsRefusedAndStillDescribed) {
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.exists(tree.text(u"\xD800"), ec...); },
                      errc::invalid_argument,
                      "exists failed: File name cannot be converted: " + (tree / "\xEF\xBF\xBD")));
}

TEST_F(LocalQuery, AFolderThatMayNotBeSearchedIsAFailureAndNotAbsence) {
    runAsOrdinaryUser([] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        makeFolder(own / "locked", 0600);
        EXPECT_TRUE(fails([&](auto&... ec) { return local.exists(own.text("locked/x"), ec...); },
                          errc::permission_denied, "exists failed: Access denied: " + (own / "locked/x")));
        EXPECT_TRUE(fails([&](auto&... ec) { return local.isSymlink(own.text("locked/x"), ec...); },
                          errc::permission_denied, "isSymlink failed: Access denied: " + (own / "locked/x")));
    });
}

/// With many items, where the host makes them quickly.
class LocalQueryAtScale : public LocalQuery {
protected:
    LocalQueryAtScale() : LocalQuery(fastFolder()) {}
};

TEST_F(LocalQueryAtScale, PathsLongerThanOneCallTakesWork) {
    makeChain(tree.path(), "folder-with-a-long-name", 400);
    const std::string chain = chainPath("folder-with-a-long-name", 400);
    ASSERT_GT(chain.size(), 9000U);
    EXPECT_EQ("e-o-", answers(chain));
    EXPECT_EQ("ei--", answers(chain + "/leaf"));
    EXPECT_EQ("----", answers(chain + "/missing"));
    EXPECT_EQ("----", answers(chain + "/leaf/x"));
    EXPECT_EQ("----", answers("missing/" + chain));
    EXPECT_EQ("----", answers("file/" + chain));
    EXPECT_EQ("e-o-", answers(std::string(9000, '/') + "folder" + std::string(9000, '/')));
}

TEST_F(LocalQuery, EveryNameIsFound) {
    for (const OddName& name : oddNames()) {
        makeFile(tree / name.onDisk);
        EXPECT_EQ("ei--", answers(tree.text(name.asText))) << name.onDisk;
    }
}

TEST_F(LocalQuery, ACodeThatWasSetBeforeIsCleared) {
    auto ec = make_error_code(errc::io_error);
    EXPECT_TRUE(ops.exists(tree.text("file"), ec));
    EXPECT_EQ(boost::system::error_code(), ec);
    EXPECT_EQ(boost::system::system_category(), ec.category());
}

TEST_F(LocalQuery, OneObjectIsAsGoodAsAnother) {
    opc::LocalFileSystemOps copy = ops;
    copy = ops;
    opc::LocalFileSystemOps moved = std::move(copy);
    EXPECT_TRUE(moved.isFile(tree.text("file")));
}

}  // namespace
}  // namespace test
