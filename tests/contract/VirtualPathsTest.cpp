// The operations of the virtual back end on paths as text.

#include "tests/contract/VirtualContract.hpp"

using contract::VirtualContract;
using foundation::storage::vfs::InvalidIRIException;
using foundation::storage::vfs::UnsupportedIRISchemeException;

namespace {

class VirtualPaths : public VirtualContract {
protected:
    opc::ustring extensionOf(const opc::ustring& name) {
        storage.getName.forget();
        storage.getName.returns(name);
        return ops.doGetExtension(u"a", msg, ec);
    }
};

TEST_F(VirtualPaths, ParentIsThatOfTheCanonicalIRI) {
    EXPECT_EQ(ops.doGetParentPath(u"a", msg, ec), u"parent(canonical(a))");
    EXPECT_EQ(platform.calls(),
              (Calls{"CanonicalAbsoluteIRI('a')", "hasParent('canonical(a)')", "getParent('canonical(a)')"}));
    expectNothingReported();
}

TEST_F(VirtualPaths, NoParentIsAnEmptyTextAndNoFailure) {
    storage.hasParent.returns(false);
    EXPECT_EQ(ops.doGetParentPath(u"a", msg, ec), u"");
    EXPECT_EQ(platform.callsTo({"getParent"}), Calls{});
    expectNothingReported();
}

TEST_F(VirtualPaths, FilenameIsTheNameOfTheCanonicalIRI) {
    EXPECT_EQ(ops.doGetFilename(u"a", msg, ec), u"name(canonical(a))");
    EXPECT_EQ(platform.calls(), (Calls{"CanonicalAbsoluteIRI('a')", "getName('canonical(a)')"}));
    expectNothingReported();
}

TEST_F(VirtualPaths, ExtensionIsWhatStandsBehindTheLastDot) {
    EXPECT_EQ(extensionOf(u"archive.tar.gz"), u"gz");
    EXPECT_EQ(extensionOf(u".profile"), u"profile");
    EXPECT_EQ(extensionOf(u"..b"), u"b");
    EXPECT_EQ(extensionOf(u"a. b"), u" b");
    EXPECT_EQ(extensionOf(u"100%.\u00E4\u00F6"), u"\u00E4\u00F6");
    expectNothingReported();
}

TEST_F(VirtualPaths, ExtensionIsEmptyWithoutADotAndBehindATrailingOne) {
    EXPECT_EQ(extensionOf(u"name."), u"");
    EXPECT_EQ(extensionOf(u"name"), u"");
    EXPECT_EQ(extensionOf(u"."), u"");
    EXPECT_EQ(extensionOf(u""), u"");
    expectNothingReported();
}

TEST_F(VirtualPaths, ExtensionAsksForTheNameOfTheCanonicalIRI) {
    EXPECT_EQ(extensionOf(u"x.y"), u"y");
    EXPECT_EQ(platform.calls(), (Calls{"CanonicalAbsoluteIRI('a')", "getName('canonical(a)')"}));
}

TEST_F(VirtualPaths, AppendJoinsARelativeTextToTheIRI) {
    EXPECT_EQ(ops.doAppendPath(u"a", u"b/c", msg, ec), u"join(iri(a)+b/c)");
    EXPECT_EQ(platform.calls(), (Calls{"AbsoluteIRI('a')", "AbsoluteIRI('iri(a)', 'b/c')"}));
    expectNothingReported();
}

TEST_F(VirtualPaths, AppendDropsOneLeadingSlashAndNoMore) {
    EXPECT_EQ(ops.doAppendPath(u"a", u"/b", msg, ec), u"join(iri(a)+b)");
    EXPECT_EQ(ops.doAppendPath(u"a", u"//b", msg, ec), u"join(iri(a)+/b)");
    EXPECT_EQ(ops.doAppendPath(u"a", u"b/", msg, ec), u"join(iri(a)+b/)");
    EXPECT_EQ(ops.doAppendPath(u"a", u"\\b", msg, ec), u"join(iri(a)+\\b)");
    EXPECT_EQ(ops.doAppendPath(u"a", u"/", msg, ec), u"join(iri(a)+)");
    EXPECT_EQ(ops.doAppendPath(u"a", u"", msg, ec), u"join(iri(a)+)");
    expectNothingReported();
}

TEST_F(VirtualPaths, AppendLeavesTheTextOfTheCallerAlone) {
    const opc::ustring toAppend = u"/b";
    ops.doAppendPath(u"a", toAppend, msg, ec);
    EXPECT_EQ(toAppend, u"/b");
}

TEST_F(VirtualPaths, NormalizeSpellsAnIRI) {
    storage.hasIRIPrefix.returns(true);
    EXPECT_EQ(ops.doNormalizePath(u"a", msg, ec), u"iri(a)");
    EXPECT_EQ(platform.calls(), (Calls{"hasIRIPrefix('a')", "AbsoluteIRI('a')"}));
    expectNothingReported();
}

TEST_F(VirtualPaths, NormalizeMakesAnIRIOfANativePathAndParsesItAgain) {
    EXPECT_EQ(ops.doNormalizePath(u"a", msg, ec), u"iri(fromPath(file+native(a)))");
    EXPECT_EQ(platform.calls(),
              (Calls{"hasIRIPrefix('a')", "make_native_form('a', true)", "toAbsoluteIRI('file', 'native(a)')",
                     "AbsoluteIRI('fromPath(file+native(a))')"}));
    expectNothingReported();
}

TEST_F(VirtualPaths, NormalizeNeverShowsAnEmptyPathToThePathLibrary) {
    EXPECT_EQ(ops.doNormalizePath(u"", msg, ec), u"iri(fromPath(file+))");
    EXPECT_EQ(platform.callsTo({"make_native_form", "toAbsoluteIRI"}), Calls{"toAbsoluteIRI('file', '')"});
}

TEST_F(VirtualPaths, LocalPathIsThatOfAFileIRI) {
    storage.getScheme.returns(u"file");
    opc::ustring local = u"old";
    EXPECT_TRUE(ops.doGetLocalPath(u"a", local));
    EXPECT_EQ(local, u"toPath(canonical(a))");
    EXPECT_EQ(platform.calls(), (Calls{"CanonicalAbsoluteIRI('a')", "getScheme('canonical(a)')",
                                       "fromAbsoluteIRI('canonical(a)')"}));
}

TEST_F(VirtualPaths, LocalPathCanGoWhereThePathCameFrom) {
    storage.getScheme.returns(u"file");
    opc::ustring path = u"a";
    EXPECT_TRUE(ops.doGetLocalPath(path, path));
    EXPECT_EQ(path, u"toPath(canonical(a))");
}

TEST_F(VirtualPaths, LocalPathOfAnyOtherSchemeIsEmptied) {
    for (const char16_t* scheme : {u"mem", u"FILE", u"File", u"files", u"fil", u""}) {
        storage.getScheme.forget();
        storage.getScheme.returns(scheme);
        opc::ustring local = u"old";
        EXPECT_FALSE(ops.doGetLocalPath(u"a", local)) << testing::PrintToString(scheme);
        EXPECT_EQ(local, u"");
    }
    EXPECT_EQ(platform.callsTo({"fromAbsoluteIRI"}), Calls{});
}

TEST_F(VirtualPaths, AnIRIThatParsesIsAbsolute) {
    storage.hasIRIPrefix.returns(true);
    EXPECT_TRUE(ops.doIsAbsolutePath(u"a"));
    EXPECT_EQ(platform.calls(), (Calls{"hasIRIPrefix('a')", "AbsoluteIRI('a')"}));
}

TEST_F(VirtualPaths, APathWithoutAnIRIPrefixIsNotAbsoluteAndNotParsed) {
    EXPECT_FALSE(ops.doIsAbsolutePath(u"/a"));
    EXPECT_EQ(platform.calls(), Calls{"hasIRIPrefix('/a')"});
}

TEST_F(VirtualPaths, AnIRIThatIsRefusedIsNotAbsoluteWhateverIsThrown) {
    storage.hasIRIPrefix.returns(true);
    storage.makeIRI.throws(InvalidIRIException("words", u"a"))
        .throws(UnsupportedIRISchemeException("words", u"a"))
        .throws(std::bad_alloc())
        .throws(7);
    for (int i = 0; i < 4; ++i) {
        EXPECT_FALSE(ops.doIsAbsolutePath(u"a"));
    }
    EXPECT_EQ(platform.callsTo({"AbsoluteIRI"}).size(), 4u);
}

}  // namespace
