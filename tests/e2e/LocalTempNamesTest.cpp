#include "tests/e2e/LocalTest.hpp"

#include <pkgcore/util/TempNames.hpp>

#include <cstdlib>
#include <set>

namespace test {

namespace {

bool startsWith(const opc::ustring& text, const opc::ustring& start) {
    return text.compare(0, start.size(), start) == 0;
}

class LocalTempNames : public LocalTest {
protected:
    /// That the name has the default form and nothing is there.
    void expectFresh(const opc::ustring& name, const opc::ustring& folder) {
        constexpr std::size_t randomCharacters = 20;
        ASSERT_TRUE(startsWith(name, folder + u"/.")) << ::testing::PrintToString(name);
        const opc::ustring rest = name.substr(folder.size() + 2);
        ASSERT_EQ(randomCharacters + 4, rest.size());
        EXPECT_EQ(randomCharacters, rest.find_first_not_of(u"abcdefghijklmnopqrstuvwxyz0123456789"));
        EXPECT_EQ(u".tmp", rest.substr(randomCharacters));
        EXPECT_FALSE(ops.exists(name));
    }
};

void setOnly(const char* variable, const std::string& value) {
    for (const char* const name : {"TMPDIR", "TMP", "TEMP", "TEMPDIR"}) {
        ::unsetenv(name);
    }
    ::setenv(variable, value.c_str(), 1);
}

TEST_F(LocalTempNames, LieInTheFolderThatWasAskedFor) {
    expectFresh(ops.getTempName(text(tree.path())), text(tree.path()));
    expectFresh(ops.getTempName(tree.text("/")), text(tree.path()));
    expectFresh(ops.getTempName(tree.text("missing")), tree.text("missing"));
    EXPECT_EQ(TreeSnapshot(), snapshot(tree.path()));
}

TEST_F(LocalTempNames, LieInTheTemporaryFolderWhereNoneIsAskedFor) {
    expectFresh(ops.getTempName(u""), opc::util::getTempDir());
}

TEST_F(LocalTempNames, AreFreshEachTime) {
    std::set<opc::ustring> names;
    for (int draw = 0; draw < 1'000; ++draw) {
        names.insert(ops.getTempName(text(tree.path())));
    }
    EXPECT_EQ(1'000U, names.size());
}

TEST_F(LocalTempNames, TakePrefixAndExtensionAsTheyStand) {
    const opc::ustring name = opc::util::getTempName(text(tree.path()), u"pre", u"ext");
    EXPECT_TRUE(startsWith(name, tree.text("pre"))) << ::testing::PrintToString(name);
    EXPECT_EQ(u"ext", name.substr(name.size() - 3));
    EXPECT_EQ(u"", ops.getExtension(name));
}

TEST_F(LocalTempNames, OfAPathWithANulAreRefused) {
    EXPECT_TRUE(throws([&] { ops.getTempName(opc::ustring(u"a\0b", 3)); },
                       make_error_code(errc::invalid_argument),
                       "getTempName failed: File name cannot be converted: a"));
}

TEST_F(LocalTempNames, TheFolderIsTheFirstThatTheEnvironmentNames) {
    makeFolder(tree / "folder");
    makeFile(tree / "file");
    for (const char* const variable : {"TMPDIR", "TMP", "TEMP", "TEMPDIR"}) {
        runInChild([&] {
            setOnly(variable, tree / "folder");
            EXPECT_EQ(tree.text("folder"), opc::util::getTempDir()) << variable;
            setOnly(variable, tree / "folder//");
            EXPECT_EQ(tree.text("folder"), opc::util::getTempDir()) << variable;
            setOnly(variable, tree / "missing");
            EXPECT_EQ(u"/tmp", opc::util::getTempDir()) << variable;
            setOnly(variable, tree / "file");
            EXPECT_EQ(u"/tmp", opc::util::getTempDir()) << variable;
            setOnly(variable, "");
            EXPECT_EQ(u"/tmp", opc::util::getTempDir()) << variable;
        });
    }
}

TEST_F(LocalTempNames, AVariableThatNamesNoFolderIsPassedOver) {
    makeFolder(tree / "folder");
    runInChild([&] {
        setOnly("TMPDIR", tree / "missing");
        ::setenv("TEMP", (tree / "folder").c_str(), 1);
        EXPECT_EQ(tree.text("folder"), opc::util::getTempDir());
        ::setenv("TMP", "/", 1);
        EXPECT_EQ(u"/", opc::util::getTempDir());
    });
}

}  // namespace
}  // namespace test
