#include <pkgcore/portable/storage/layer/NamePattern.hpp>

#include <gtest/gtest.h>

#include <string>

using foundation::storage::portable::matches;

namespace {

struct Match {
    std::u16string name;
    std::u16string pattern;
    bool isMatch;
};

const Match kMatches[] = {
    {u"a", u"", true},
    {u"", u"", true},
    {u"a", u"*", true},
    {u"", u"*", true},
    {u"abc", u"abc", true},
    {u"abc", u"ab", false},
    {u"ab", u"abc", false},
    {u"abc", u"Abc", false},
    {u"a.txt", u"*.txt", true},
    {u".txt", u"*.txt", true},
    {u"a.txt.gz", u"*.txt", false},
    {u"a.txt", u"*.t?t", true},
    {u"a", u"?", true},
    {u"ab", u"?", false},
    {u"", u"?", false},
    {u"abc", u"a*c", true},
    {u"ac", u"a*c", true},
    {u"abcbc", u"a*bc", true},
    {u"abab", u"*ab", true},
    {u"aab", u"*ab", true},
    {u"abcd", u"a*b*d", true},
    {u"abcd", u"a*d*b", false},
    {u"abc", u"***", true},
    {u"abc", u"*?*?*?*", true},
    {u"ab", u"*?*?*?*", false},
    {u"a*b", u"a*b", true},
    {u"a?b", u"a?b", true},
    {u"\xD83D\xDE00", u"?", true},
    {u"\xD83D\xDE00", u"??", false},
    {u"x\xD83D\xDE00y", u"x?y", true},
    {u"x\xD83D\xDE00y", u"*y", true},
    {u"\xDC80", u"?", true},
    {u"a/b", u"a*", true},
};

TEST(NamePattern, StandsForNames) {
    for (const Match& row : kMatches) {
        EXPECT_EQ(matches(row.name, row.pattern), row.isMatch)
            << testing::PrintToString(row.name) << ' ' << testing::PrintToString(row.pattern);
    }
}

TEST(NamePattern, TakesTimeThatGrowsByTheProductAlone) {
    const std::u16string name(2'000, u'a');
    std::u16string pattern;
    for (int i = 0; i < 200; ++i) {
        pattern += u"a*";
    }
    EXPECT_TRUE(matches(name, pattern));
    EXPECT_FALSE(matches(name, pattern + u"b"));
}

}  // namespace
