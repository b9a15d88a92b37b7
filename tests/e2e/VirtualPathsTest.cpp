// IRIs as text: pieces, joining, spelling, native paths, temporary names.

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/util/TempNames.hpp>

#include "tests/e2e/VirtualTest.hpp"

#include <set>

namespace test {

namespace {

using foundation::storage::vfs::InvalidIRIException;
using foundation::storage::vfs::UnsupportedIRISchemeException;
using opc::ustring;

class VirtualPaths : public VirtualTest {};

TEST_F(VirtualPaths, ExtensionIsWhatStandsBehindTheLastDotOfTheName) {
    EXPECT_EQ(ops.getExtension(u"mem://s/archive.tar.gz"), u"gz");
    EXPECT_EQ(ops.getExtension(u"mem://s/.profile"), u"profile");
    EXPECT_EQ(ops.getExtension(u"mem://s/name."), u"");
    EXPECT_EQ(ops.getExtension(u"mem://s/name"), u"");
    EXPECT_EQ(ops.getExtension(u"mem://s/a.b/name"), u"");
    EXPECT_EQ(ops.getExtension(u"mem://s/a.b/"), u"b");
    EXPECT_EQ(ops.getExtension(u"mem://s.t/"), u"");
    EXPECT_EQ(ops.getExtension(u"mem://s/a.%20b"), u" b");
}

TEST_F(VirtualPaths, FilenameIsPlainText) {
    EXPECT_EQ(ops.getFilename(u"mem://s/100%25%20done%3F.txt"), u"100% done?.txt");
    EXPECT_EQ(ops.getFilename(u"mem://s/a/"), u"a");
    EXPECT_EQ(ops.getFilename(u"mem://s/"), u"");
    EXPECT_EQ(ops.getFilename(u"mem://s"), u"");
}

TEST_F(VirtualPaths, ParentEndsAtTheRootWithoutAnError) {
    EXPECT_EQ(ops.getParentPath(u"mem://s/a/b"), u"mem://s/a");
    EXPECT_EQ(ops.getParentPath(u"mem://s/a"), u"mem://s/");
    EXPECT_EQ(ops.getParentPath(u"mem://s/"), u"");
    EXPECT_EQ(ops.getParentPath(u"mem://s"), u"");
    EXPECT_EQ(ops.getParentPath(u"file:///"), u"");
}

TEST_F(VirtualPaths, AppendDropsOneLeadingSlash) {
    EXPECT_EQ(ops.appendPath(u"mem://s/a", u"b"), u"mem://s/a/b");
    EXPECT_EQ(ops.appendPath(u"mem://s/a", u"/b"), ops.appendPath(u"mem://s/a", u"b"));
    EXPECT_EQ(ops.appendPath(u"mem://s/a", u"//b"), u"mem://s/a//b");
    EXPECT_EQ(ops.appendPath(u"mem://s", u"b/c"), u"mem://s/b/c");
    EXPECT_EQ(ops.appendPath(u"mem://s/a/", u"b"), u"mem://s/a/b");
}

TEST_F(VirtualPaths, NamesSurviveTheWayIntoAnIRIAndBack) {
    for (const char16_t* name : {u"100% done?.txt", u"a#b", u"%41", u"\u00E4 \u4E2D\U0001F600", u"a&b=c+d",
                                 u"<\"x\">", u"a\\b", u"~."}) {
        const ustring path = ops.appendPath(u"mem://s", name);
        EXPECT_EQ(ops.getFilename(path), name) << testing::PrintToString(path);
        write(path, "text");
        EXPECT_EQ(read(path), "text");
        EXPECT_EQ(files(u"mem://s", false), std::vector<ustring>{ops.normalizePath(path)});
        ops.remove(path);
    }
}

TEST_F(VirtualPaths, NormalizeSpellsAnIRIOneWay) {
    EXPECT_EQ(ops.normalizePath(u"mem://s/%7Ea%2e%c3%a4"), u"mem://s/~a.\u00E4");
    EXPECT_EQ(ops.normalizePath(ops.normalizePath(u"mem://s/a%20b")), u"mem://s/a%20b");
}

TEST_F(VirtualPaths, NormalizeMakesAnIRIOfANativePath) {
    EXPECT_EQ(ops.normalizePath(u"/tmp/a b"), u"file:///tmp/a%20b");
    EXPECT_EQ(ops.normalizePath(u"/tmp//a/"), u"file:///tmp/a");
    EXPECT_EQ(ops.normalizePath(u"a/b"), u"file:///a/b");
    EXPECT_EQ(ops.normalizePath(u"/100%"), u"file:///100%25");
}

TEST_F(VirtualPaths, LocalPathIsThatOfAFileIRIOnly) {
    ustring local = u"old";
    EXPECT_TRUE(ops.getLocalPath(u"file:///tmp/a%20b", local));
    EXPECT_EQ(local, u"/tmp/a b");
    EXPECT_FALSE(ops.getLocalPath(u"mem://s/a", local));
    EXPECT_EQ(local, u"");
}

TEST_F(VirtualPaths, NativePathsSurviveTheWayIntoAnIRIAndBack) {
    for (const char16_t* path : {u"/", u"/tmp/a b", u"/100%/?#", u"/\u00E4/\\x"}) {
        ustring local;
        EXPECT_TRUE(ops.getLocalPath(ops.normalizePath(path), local));
        EXPECT_EQ(local, path);
    }
}

TEST_F(VirtualPaths, AnIRIThatParsesIsAbsoluteAndNothingElseIs) {
    EXPECT_TRUE(ops.isAbsolutePath(u"mem://s/a"));
    EXPECT_TRUE(ops.isAbsolutePath(u"sqlite://not-mounted/a"));
    for (const char16_t* path : {u"/tmp/a", u"a", u"", u"mem://s/a b", u"mem://s/%2F", u"mem://s/a?b",
                                 u"mem://s/a#b", u"http://a/b", u"mem:/s/a", u"mem://u@s/a", u"mem://s/%0"}) {
        EXPECT_FALSE(ops.isAbsolutePath(path)) << testing::PrintToString(path);
    }
}

TEST_F(VirtualPaths, FilenameAndExtensionAndLocalPathLetTheExceptionsOfTheStoragePass) {
    ustring local = u"old";
    EXPECT_THROW(ops.getFilename(u"mem://s/a b"), InvalidIRIException);
    EXPECT_THROW(ops.getExtension(u"/native"), InvalidIRIException);
    EXPECT_THROW(ops.getLocalPath(u"mem://s/a b", local), InvalidIRIException);
    EXPECT_EQ(local, u"old");
    EXPECT_THROW(ops.getFilename(u"http://a/b"), UnsupportedIRISchemeException);
}

TEST_F(VirtualPaths, OtherPathOperationsTranslateThem) {
    EXPECT_TRUE(
        throws([&] { ops.getParentPath(u"/native"); }, make_error_code(errc::bad_address),
               "getParentPath failed: Character U+002F at offset 0 is not allowed in the scheme of an "
               "IRI: /native"));
    EXPECT_TRUE(throws([&] { ops.appendPath(u"http://a", u"b"); },
                       make_error_code(errc::address_family_not_supported),
                       "appendPath failed: The scheme belongs to no storage system: http"));
}

TEST_F(VirtualPaths, TempNameIsFreeAndInTheFolder) {
    ops.createFolder(u"mem://store/dir");
    std::set<ustring> names;
    for (int i = 0; i < 50; ++i) {
        const ustring name = ops.getTempName(u"mem://store/dir");
        EXPECT_EQ(ops.getParentPath(name), u"mem://store/dir");
        EXPECT_EQ(ops.getExtension(name), u"tmp");
        EXPECT_EQ(ops.getFilename(name).front(), u'.');
        EXPECT_FALSE(ops.exists(name));
        EXPECT_TRUE(names.insert(name).second);
        write(name, "");
    }
}

TEST_F(VirtualPaths, TempNameInARootAndInAFolderWithAnOddName) {
    EXPECT_EQ(ops.getParentPath(ops.getTempName(u"mem://store")), u"mem://store/");
    EXPECT_EQ(ops.getParentPath(ops.getTempName(u"mem://store/")), u"mem://store/");
    const ustring odd = ops.appendPath(u"mem://store", u"50% \u00E4?");
    EXPECT_EQ(ops.getParentPath(ops.getTempName(odd)), odd);
}

TEST_F(VirtualPaths, TempNameOfAFileIRIIsAFileIRI) {
    const ustring name = ops.getTempName(u"file:///tmp");
    EXPECT_EQ(ops.getParentPath(name), u"file:///tmp");
    EXPECT_EQ(ops.getExtension(name), u"tmp");
}

TEST_F(VirtualPaths, TempNameWithoutAFolderIsAFileIRIInTheTemporaryFolder) {
    const ustring name = ops.getTempName(u"");
    EXPECT_EQ(ops.normalizePath(name).substr(0, 8), u"file:///");
    EXPECT_EQ(ops.getExtension(name), u"tmp");
    EXPECT_FALSE(ops.exists(name));
    ustring local;
    ASSERT_TRUE(ops.getLocalPath(name, local));
    EXPECT_EQ(selector.getLocal().getParentPath(local), opc::util::getTempDir());
}

TEST_F(VirtualPaths, TempNameInARootIsInThatRootHoweverItIsWritten) {
    for (const char16_t* const root : {u"mem://", u"mem:///", u"file://", u"file:///", u"file://localhost",
                                       u"file://localhost/", u"FILE://", u"mem://store", u"mem://store/"}) {
        EXPECT_EQ(ops.getParentPath(ops.getTempName(root)), ops.getParentPath(ops.appendPath(root, u"x")))
            << testing::PrintToString(ustring(root));
    }
    EXPECT_EQ(ops.getParentPath(ops.getTempName(u"file://localhost/tmp/x")), u"file:///tmp/x");
}

TEST_F(VirtualPaths, TempNameOnAnotherHostIsRefused) {
    EXPECT_TRUE(throws([&] { ops.getTempName(u"file://server/share"); }, make_error_code(errc::bad_address),
                       "getTempName failed: This host has no native paths with an authority: "
                       "file://server/share"));
}

TEST_F(VirtualPaths, TempNameWhoseLookUpFailsIsReported) {
    EXPECT_TRUE(throws([&] { ops.getTempName(u"sqlite://notes"); },
                       make_error_code(errc::address_family_not_supported),
                       "getTempName failed: The scheme is not mounted: sqlite"));
}

}  // namespace

}  // namespace test
