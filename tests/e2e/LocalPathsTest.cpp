#include "tests/e2e/LocalTest.hpp"

namespace test {

namespace {

class LocalPaths : public ::testing::Test {
protected:
    opc::LocalFileSystemOps ops;
};

TEST_F(LocalPaths, AreAbsoluteWhereTheyStartAtTheRoot) {
    for (const char16_t* const path : {u"/", u"//", u"/a", u"//a/b", u"/."}) {
        EXPECT_TRUE(ops.isAbsolutePath(path)) << ::testing::PrintToString(path);
    }
    for (const char16_t* const path :
         {u"", u"a", u"./a", u"../a", u"a/b", u"\\a", u"C:/a", u" /a", u"file:///a"}) {
        EXPECT_FALSE(ops.isAbsolutePath(path)) << ::testing::PrintToString(path);
    }
}

TEST_F(LocalPaths, AreTheirOwnLocalPathsToTheLetter) {
    for (const opc::ustring& path : {opc::ustring(), opc::ustring(u"/a"), opc::ustring(u"a//b/"),
                                     opc::ustring(u"a\0b", 3), opc::ustring(u"\xD800")}) {
        opc::ustring local = u"old";
        EXPECT_TRUE(ops.getLocalPath(path, local));
        EXPECT_EQ(path, local);
    }
    opc::ustring same = u"a//b";
    EXPECT_TRUE(ops.getLocalPath(same, same));
    EXPECT_EQ(u"a//b", same);
}

struct Pieces {
    opc::ustring path;
    opc::ustring normalized;
    opc::ustring parent;
    opc::ustring filename;
    opc::ustring extension;
};

TEST_F(LocalPaths, FallIntoTheirPieces) {
    const std::vector<Pieces> table = {
        {u"", u"", u"", u"", u""},
        {u"/", u"/", u"", u"", u""},
        {u"///", u"/", u"", u"", u""},
        {u"a", u"a", u"", u"a", u""},
        {u"a/", u"a", u"", u"a", u""},
        {u"/a", u"/a", u"/", u"a", u""},
        {u"//a", u"/a", u"/", u"a", u""},
        {u"a/b.txt", u"a/b.txt", u"a", u"b.txt", u"txt"},
        {u"a//b///c.tar.gz/", u"a/b/c.tar.gz", u"a/b", u"c.tar.gz", u"gz"},
        {u"/x/.profile", u"/x/.profile", u"/x", u".profile", u"profile"},
        {u"/x.d/name", u"/x.d/name", u"/x.d", u"name", u""},
        {u"name.", u"name.", u"", u"name.", u""},
        {u".", u".", u"", u".", u""},
        {u"..", u"..", u"", u"..", u""},
        {u"a/./b/../c", u"a/./b/../c", u"a/./b/..", u"c", u""},
        {u"a\\b.c", u"a\\b.c", u"", u"a\\b.c", u"c"},
        {u"/a b/c d.e f", u"/a b/c d.e f", u"/a b", u"c d.e f", u"e f"},
        {u"/\x00e9/e\x0301.\xD83D\xDE00", u"/\x00e9/e\x0301.\xD83D\xDE00", u"/\x00e9",
         u"e\x0301.\xD83D\xDE00", u"\xD83D\xDE00"},
    };
    for (const Pieces& row : table) {
        EXPECT_EQ(row.normalized, ops.normalizePath(row.path)) << ::testing::PrintToString(row.path);
        EXPECT_EQ(row.parent, ops.getParentPath(row.path)) << ::testing::PrintToString(row.path);
        EXPECT_EQ(row.filename, ops.getFilename(row.path)) << ::testing::PrintToString(row.path);
        EXPECT_EQ(row.extension, ops.getExtension(row.path)) << ::testing::PrintToString(row.path);
    }
}

TEST_F(LocalPaths, WalkingUpEnds) {
    opc::ustring path = u"/a/b//c/";
    std::vector<opc::ustring> steps;
    for (; !path.empty(); path = ops.getParentPath(path)) {
        steps.push_back(path);
        ASSERT_LT(steps.size(), 10U);
    }
    EXPECT_THAT(steps, ::testing::ElementsAre(u"/a/b//c/", u"/a/b", u"/a", u"/"));
}

struct Joint {
    opc::ustring base;
    opc::ustring toAppend;
    opc::ustring joined;
};

TEST_F(LocalPaths, AreJoinedWithOneSeparator) {
    const std::vector<Joint> table = {
        {u"/a", u"x", u"/a/x"},    {u"/a", u"/x", u"/a/x"},    {u"/a/", u"x", u"/a/x"},
        {u"/a//", u"/x", u"/a/x"}, {u"/a", u"x/y", u"/a/x/y"}, {u"/a", u"//x", u"/a/x"},
        {u"/", u"x", u"/x"},       {u"/", u"/x", u"/x"},       {u"/a", u"", u"/a"},
        {u"/a//b/", u"", u"/a/b"}, {u"/a//b/", u"/", u"/a/b"}, {u"", u"", u""},
        {u"", u"x", u"x"},         {u"", u"/x", u"x"},         {u"", u"/", u""},
        {u"", u"//x", u"/x"},      {u"a", u"..", u"a/.."},     {u"a", u"\\x", u"a/\\x"},
    };
    for (const Joint& row : table) {
        EXPECT_EQ(row.joined, ops.appendPath(row.base, row.toAppend))
            << ::testing::PrintToString(row.base) << " + " << ::testing::PrintToString(row.toAppend);
    }
}

}  // namespace
}  // namespace test
