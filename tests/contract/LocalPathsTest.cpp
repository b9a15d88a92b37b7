// The operations of the local back end on paths as text.

#include "tests/contract/LocalContract.hpp"

using contract::LocalContract;

namespace {

class LocalPaths : public LocalContract {};

TEST_F(LocalPaths, TempNameAsksForAFreeNameInTheFolder) {
    EXPECT_EQ(ops.doGetTempName(u"dir", msg, ec), u"generic(native(dir/.random.tmp))");
    EXPECT_EQ(platform.callsTo({"temp_directory_name", "tmpnam", "exists"}),
              (Calls{"tmpnam('dir', '.', '.tmp')", "exists('dir/.random.tmp')"}));
    expectNothingReported();
}

TEST_F(LocalPaths, TempNameWithoutAFolderIsInTheTemporaryFolder) {
    EXPECT_EQ(ops.doGetTempName(u"", msg, ec), u"generic(native(generic(native(tmp))/.random.tmp))");
    expectNothingReported();
}

TEST_F(LocalPaths, ParentIsConvertedToNativeFormTwiceAndToGenericFormOnce) {
    EXPECT_EQ(ops.doGetParentPath(u"a", msg, ec), u"generic(native(parent(native(a))))");
    expectNothingReported();
}

TEST_F(LocalPaths, FilenameIsThatOfTheNativeForm) {
    EXPECT_EQ(ops.doGetFilename(u"a", msg, ec), u"filename(native(a))");
    expectNothingReported();
}

TEST_F(LocalPaths, ExtensionIsThatOfTheNativeForm) {
    EXPECT_EQ(ops.doGetExtension(u"a", msg, ec), u"extension(native(a))");
    expectNothingReported();
}

TEST_F(LocalPaths, NormalizedPathIsTheGenericOfTheNativeForm) {
    EXPECT_EQ(ops.doNormalizePath(u"a", msg, ec), u"generic(native(a))");
    expectNothingReported();
}

TEST_F(LocalPaths, AppendJoinsToTheNativeBase) {
    EXPECT_EQ(ops.doAppendPath(u"a", u"b", msg, ec), u"generic(join(native(a)+b))");
    EXPECT_EQ(platform.calls(),
              (Calls{"make_native_form('a', true)", "concatenate_pathname('native(a)', 'b', true)",
                     "make_generic_form('join(native(a)+b)')"}));
    expectNothingReported();
}

TEST_F(LocalPaths, AppendDoesNotConvertAnEmptyBase) {
    EXPECT_EQ(ops.doAppendPath(u"", u"b", msg, ec), u"generic(join(+b))");
    EXPECT_EQ(platform.calls(),
              (Calls{"concatenate_pathname('', 'b', true)", "make_generic_form('join(+b)')"}));
}

TEST_F(LocalPaths, AppendOfNothingIsTheGenericFormOfTheBase) {
    EXPECT_EQ(ops.doAppendPath(u"a", u"", msg, ec), u"generic(native(a))");
    EXPECT_EQ(ops.doAppendPath(u"a", u"/", msg, ec), u"generic(native(a))");
    EXPECT_EQ(platform.callsTo({"concatenate_pathname"}), Calls{});
    expectNothingReported();
}

TEST_F(LocalPaths, AppendOfNothingToNothingStillAsksForTheGenericForm) {
    EXPECT_EQ(ops.doAppendPath(u"", u"", msg, ec), u"generic()");
    EXPECT_EQ(platform.calls(), Calls{"make_generic_form('')"});
}

TEST_F(LocalPaths, AppendDropsOneLeadingSlashAndNoMore) {
    EXPECT_EQ(ops.doAppendPath(u"a", u"/x", msg, ec), u"generic(join(native(a)+x))");
    EXPECT_EQ(ops.doAppendPath(u"a", u"//x", msg, ec), u"generic(join(native(a)+/x))");
    EXPECT_EQ(ops.doAppendPath(u"a", u"///", msg, ec), u"generic(join(native(a)+//))");
}

TEST_F(LocalPaths, AppendKeepsALaterSlashAndALeadingBackslash) {
    EXPECT_EQ(ops.doAppendPath(u"a", u"x/y", msg, ec), u"generic(join(native(a)+x/y))");
    EXPECT_EQ(ops.doAppendPath(u"a", u"x/", msg, ec), u"generic(join(native(a)+x/))");
    EXPECT_EQ(ops.doAppendPath(u"a", u"\\x", msg, ec), u"generic(join(native(a)+\\x))");
}

TEST_F(LocalPaths, AbsoluteIsAskedOfTheNativeForm) {
    platform.is_absolute.at(u"native(a)").returns(true);
    EXPECT_TRUE(ops.doIsAbsolutePath(u"a"));
    EXPECT_FALSE(ops.doIsAbsolutePath(u"b"));
    EXPECT_EQ(platform.calls(), (Calls{"make_native_form('a', true)", "is_absolute('native(a)')",
                                       "make_native_form('b', true)", "is_absolute('native(b)')"}));
}

TEST_F(LocalPaths, AbsoluteIsAskedOfAnEmptyPathAsItIs) {
    platform.is_absolute.returns(true);
    EXPECT_TRUE(ops.doIsAbsolutePath(u""));
    EXPECT_EQ(platform.calls(), Calls{"is_absolute('')"});
}

TEST_F(LocalPaths, LocalPathIsThePathUnchanged) {
    opc::ustring localPath = u"old";
    EXPECT_TRUE(ops.doGetLocalPath(u"a//b\\", localPath));
    EXPECT_EQ(localPath, u"a//b\\");
    EXPECT_TRUE(ops.doGetLocalPath(u"", localPath));
    EXPECT_EQ(localPath, u"");
    EXPECT_EQ(platform.calls(), Calls{});
}

TEST_F(LocalPaths, LocalPathMayBeGivenTheSameObjectTwice) {
    opc::ustring path = u"a path that is too long for a string's own buffer";
    EXPECT_TRUE(ops.doGetLocalPath(path, path));
    EXPECT_EQ(path, u"a path that is too long for a string's own buffer");
}

}  // namespace
