#include <pkgcore/portable/storage/ProviderTypes.hpp>

#include <gtest/gtest.h>

using foundation::storage::provider::Path;

namespace {

struct Family {
    std::u16string path;
    std::u16string name;
    std::u16string parent;
};

const Family kFamilies[] = {
    {u"", u"", u""},
    {u"a", u"a", u""},
    {u"a/b", u"b", u"a"},
    {u"a/b/c d", u"c d", u"a/b"},
};

TEST(ProviderPath, KnowsItsNameAndItsParent) {
    for (const Family& row : kFamilies) {
        const Path path(row.path, u"store");
        EXPECT_EQ(path.name(), row.name);
        EXPECT_EQ(path.parent(), Path(row.parent, u"store"));
        EXPECT_EQ(path.isRoot(), row.path.empty());
    }
}

TEST(ProviderPath, HasChildren) {
    EXPECT_EQ(Path().child(u"a").child(u"b").text(), u"a/b");
    EXPECT_EQ(Path(u"", u"store").child(u"a"), Path(u"a", u"store"));
    EXPECT_EQ(Path(u"a/b").child(u"c").parent(), Path(u"a/b"));
}

struct Nesting {
    std::u16string path;
    std::u16string other;
    bool isAtOrBelow;
};

const Nesting kNestings[] = {
    {u"", u"", true},     {u"a", u"", true},      {u"", u"a", false},   {u"a", u"a", true},
    {u"a/b", u"a", true}, {u"a/b/c", u"a", true}, {u"ab", u"a", false}, {u"a", u"a/b", false},
    {u"b", u"a", false},  {u"a.b", u"a", false},
};

TEST(ProviderPath, LiesAtOrBelowAnotherByNamesNotByLetters) {
    for (const Nesting& row : kNestings) {
        EXPECT_EQ(Path(row.path).isAtOrBelow(Path(row.other)), row.isAtOrBelow)
            << testing::PrintToString(row.path) << ' ' << testing::PrintToString(row.other);
        EXPECT_FALSE(Path(row.path, u"x").isAtOrBelow(Path(row.other, u"y")));
    }
}

TEST(ProviderPath, ComparesByAuthorityToo) {
    EXPECT_EQ(Path(u"a"), Path(u"a"));
    EXPECT_NE(Path(u"a"), Path(u"b"));
    EXPECT_NE(Path(u"a", u"x"), Path(u"a", u"y"));
}

}  // namespace
