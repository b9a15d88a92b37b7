// The path helpers over the library's own path syntax. Paths in generic notation read the same on every host.

#include <pkgcore/filesystem/PathHelpers.hpp>

#include <gtest/gtest.h>

using namespace opc::detail;
using opc::ustring;

namespace {

struct Row {
    ustring path;
    ustring normalized;
    ustring parent;
    ustring filename;
    ustring extension;
};

const Row kRows[] = {
    {u"", u"", u"", u"", u""},
    {u"/", u"/", u"", u"", u""},
    {u"/a", u"/a", u"/", u"a", u""},
    {u"a", u"a", u"", u"a", u""},
    {u"a/", u"a", u"", u"a", u""},
    {u"a/b.c", u"a/b.c", u"a", u"b.c", u"c"},
    {u"a//b///c.d/", u"a/b/c.d", u"a/b", u"c.d", u"d"},
    {u"/a/b/archive.tar.gz", u"/a/b/archive.tar.gz", u"/a/b", u"archive.tar.gz", u"gz"},
    {u"/home/.profile", u"/home/.profile", u"/home", u".profile", u"profile"},
    {u"a/name.", u"a/name.", u"a", u"name.", u""},
    {u"a/..", u"a/..", u"a", u"..", u""},
    {u"a/../b", u"a/../b", u"a/..", u"b", u""},
    {u"./a", u"./a", u".", u"a", u""},
    {u"\u4E2D/\u00E4.\u00F6", u"\u4E2D/\u00E4.\u00F6", u"\u4E2D", u"\u00E4.\u00F6", u"\u00F6"},
};

TEST(PathHelpers, GiveEachPieceOfAPath) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::PrintToString(row.path));
        EXPECT_EQ(normalizePath(row.path), row.normalized);
        EXPECT_EQ(getParentPath(row.path), row.parent);
        EXPECT_EQ(getFilename(row.path), row.filename);
        EXPECT_EQ(getExtension(row.path), row.extension);
    }
}

TEST(PathHelpers, WalkingUpFromAnywhereEndsWithNothing) {
    ustring path = u"/a/b/c/d";
    int steps = 0;
    for (; !path.empty(); ++steps) {
        path = getParentPath(path);
    }
    EXPECT_EQ(steps, 5);
}

TEST(PathHelpers, TakeAPathOfAnyLength) {
    ustring path;
    for (int i = 0; i < 20000; ++i) {
        path += u"//abcd";
    }
    const ustring normalized = normalizePath(path + u"/");
    EXPECT_EQ(normalized.size(), 20000u * 5);
    EXPECT_EQ(getFilename(path), u"abcd");
    EXPECT_EQ(getParentPath(path), normalized.substr(0, normalized.size() - 5));
}

TEST(PathHelpers, GiveTheHostsOwnWidePath) {
    EXPECT_EQ(makeNativePath(u""), L"");
    EXPECT_EQ(makeNativePath(u"a/"), L"a");
    EXPECT_EQ(makeNativePath(u"\u00E4"), L"\u00E4");
}

}  // namespace
