#include "tests/e2e/LocalTest.hpp"

#include <cstdlib>

namespace test {

namespace {

class LocalMessages : public LocalTest {
protected:
    /// The text with which asking for a path fails whose last name, of 300 times `unit`, is too long.
    std::string failureText(const opc::ustring& unit) {
        opc::ustring path = text("/tmp/");
        for (int times = 0; times < 300; ++times) {
            path += unit;
        }
        try {
            ops.exists(path);
        } catch (const opc::Exception& failure) {
            return failure.what();
        }
        return "no failure";
    }

    static std::string expected(const std::string& unit) {
        std::string result = "exists failed: File name too long: /tmp/";
        for (int times = 0; times < 300; ++times) {
            result += unit;
        }
        return result;
    }

    static void useLocale(const char* name) { ::setenv("LC_ALL", name, 1); }
};

TEST_F(LocalMessages, SpellPathsInUtf8WhereTheLocaleSaysNothing) {
    for (const char* const locale : {"C", "POSIX", "en_US.UTF-8"}) {
        runInChild([&] {
            useLocale(locale);
            EXPECT_EQ(expected("\xC3\xA9\xE2\x82\xAC"), failureText(u"\x00e9\x20ac")) << locale;
        });
    }
}

TEST_F(LocalMessages, SpellPathsInTheEncodingOfTheUser) {
    runInChild([&] {
        useLocale("de_DE.ISO-8859-1");
        EXPECT_EQ(expected("\xE9"), failureText(u"\x00e9"));
    });
}

TEST_F(LocalMessages, FallBackOnSubstitutesWhereTheEncodingHasNoSuchCharacter) {
    runInChild([&] {
        useLocale("de_DE.ISO-8859-1");
        EXPECT_EQ(expected("\x1A"), failureText(u"\x20ac"));
    });
}

TEST_F(LocalMessages, DescribeNamesThatAreNotUtf8) {
    EXPECT_EQ(expected("x\xEF\xBF\xBD"), failureText(u"x\xdce9"));
}

TEST_F(LocalMessages, FilesHaveUtf8NamesWhateverTheLocale) {
    runInChild([&] {
        useLocale("de_DE.ISO-8859-1");
        ops.createFolder(tree.text(u"\x00e9"));
        EXPECT_TRUE(isThere(tree / "\xC3\xA9"));
        ops.createSymlink(u"\x00e9", tree.text(u"link"));
        EXPECT_EQ("\xC3\xA9", linkTextOf(tree / "link"));
    });
}

TEST_F(LocalMessages, EveryOperationSaysItsNameFirst) {
    const opc::ustring bad = tree.text(u"\xD800");
    const std::string rest = " failed: File name cannot be converted: " + (tree / "\xEF\xBF\xBD");
    const auto code = make_error_code(errc::invalid_argument);
    const boost::posix_time::ptime time(boost::gregorian::date(2001, 1, 1));
    std::vector<opc::ustring> files;
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.exists(bad, ec...); }, code, "exists" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.isFile(bad, ec...); }, code, "isFile" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.isFolder(bad, ec...); }, code, "isFolder" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.isSymlink(bad, ec...); }, code, "isSymlink" + rest));
    EXPECT_TRUE(
        fails([&](auto&... ec) { return ops.getPermissions(bad, ec...); }, code, "getPermissions" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.setPermissions(bad, opc::Perms::ReadOnly, ec...); }, code,
                      "setPermissions" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.getLastModifiedTime(bad, ec...); }, code,
                      "getLastModifiedTime" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.setLastModifiedTime(bad, time, ec...); }, code,
                      "setLastModifiedTime" + rest));
    EXPECT_TRUE(
        fails([&](auto&... ec) { return ops.getLinkTarget(bad, ec...); }, code, "getLinkTarget" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.getFiles(bad, files, true, ec...); }, code, "getFiles" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.createFolder(bad, ec...); }, code, "createFolder" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.createFolders(bad, ec...); }, code, "createFolders" + rest));
    EXPECT_TRUE(
        fails([&](auto&... ec) { ops.createSymlink(u"target", bad, ec...); }, code, "createSymlink" + rest));
    EXPECT_TRUE(
        fails([&](auto&... ec) { ops.copy(bad, tree.text("to"), opc::Fail, ec...); }, code, "copy" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.rename(bad, tree.text("to"), ec...); }, code, "rename" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.remove(bad, ec...); }, code, "remove" + rest));
    EXPECT_TRUE(fails([&](auto&... ec) { ops.removeAll(bad, ec...); }, code, "removeAll" + rest));
}

}  // namespace
}  // namespace test
