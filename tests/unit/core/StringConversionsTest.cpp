#include <pkgcore/core/StringConversions.hpp>

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/core/MessageText.hpp>
#include <pkgcore/platform/i18n/CvtException.hpp>

#include "tests/support/ScopedEnvironment.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

using namespace opc;
using namespace std::string_literals;
using opc::detail::toMessageText;
using opc::detail::toStringFromUTF8String;
using opc::detail::toUTF8String;
using test::ScopedLocaleEnvironment;

namespace {

/// The text of the opc::Exception that the work throws, which has to carry a cleared code.
template <typename Work>
std::string failureOf(Work work) {
    try {
        work();
    } catch (const Exception& failure) {
        EXPECT_FALSE(failure.code().failed());
        EXPECT_EQ(failure.code().value(), 0);
        EXPECT_EQ(failure.code().category(), boost::system::system_category());
        return failure.what();
    }
    return "no failure";
}

TEST(StringConversions, Utf8GoesBothWays) {
    const std::string bytes = "a\0\xC3\xA4\xE4\xB8\xAD\xF0\x9F\x98\x80"s;
    const ustring text = u"a\0\u00E4\u4E2D\U0001F600"s;
    for (const bool lenient : {false, true}) {
        EXPECT_EQ(toStringFromUTF8String(bytes, lenient), text);
        EXPECT_EQ(toUTF8String(text, lenient), bytes);
    }
}

TEST(StringConversions, MalformedUtf8ThrowsUnlessLenient) {
    EXPECT_EQ(failureOf([] { toStringFromUTF8String("ab\xE4\xB8z", false); }),
              "Malformed UTF-8 at byte offset 2: E4 B8");
    EXPECT_EQ(toStringFromUTF8String("ab\xE4\xB8z", true), u"ab\uFFFDz");
    EXPECT_EQ(failureOf([] { toUTF8String(u"a\xD800", false); }),
              "Unpaired surrogate at code unit offset 1: D800");
    EXPECT_EQ(toUTF8String(u"a\xD800", true), "a\xEF\xBF\xBD");
}

TEST(StringConversions, NarrowTextIsInTheEncodingOfTheEnvironment) {
    const ScopedLocaleEnvironment latin("de_DE.ISO-8859-1");
    EXPECT_EQ(toString("\xE4\xFF"s, false), u"\u00E4\u00FF");
    EXPECT_EQ(toUDEString(u"\u00E4\u00FF"), "\xE4\xFF");
    const ScopedLocaleEnvironment euro("de_DE@euro");
    EXPECT_EQ(toString("\xA4"s, false), u"\u20AC");
    const ScopedLocaleEnvironment japanese("en_US.UTF-8", "ja_JP.Shift_JIS");
    EXPECT_EQ(toString("\x93\xFA"s, false), u"\u65E5");
    const ScopedLocaleEnvironment shifted(nullptr, nullptr, "ja_JP.ISO-2022-JP");
    EXPECT_EQ(toString("\x1B$BF|\x1B(B"s, false), u"\u65E5");
    EXPECT_EQ(toUDEString(u"\u65E5"), "\x1B$BF|\x1B(B");
    const ScopedLocaleEnvironment wide("en_US.UTF-16BE");
    EXPECT_EQ(toString("\0a"s, false), u"a");
}

TEST(StringConversions, NarrowTextIsUtf8WithoutALocale) {
    for (const char* locale :
         {static_cast<const char*>(nullptr), "", "C", "POSIX", "C.UTF-8", "xx.nothing"}) {
        const ScopedLocaleEnvironment environment(locale);
        EXPECT_EQ(toString("\xC3\xA4"s, false), u"\u00E4");
        EXPECT_EQ(toUDEString(u"\u00E4"), "\xC3\xA4");
        EXPECT_EQ(failureOf([] { toString("\xC3"s, false); }), "Malformed UTF-8 at byte offset 0: C3");
        EXPECT_EQ(toString("\xC3"s, true), u"\uFFFD");
    }
}

TEST(StringConversions, TheUsersEncodingIsStrict) {
    const ScopedLocaleEnvironment environment("de_DE.ISO-8859-1");
    EXPECT_EQ(failureOf([] { toUDEString(u"1 \u20AC"); }),
              "Character that ISO-8859-1 does not have at code unit offset 2: U+20AC");
    EXPECT_EQ(failureOf([] { toUDEString(u"\xDC00"); }), "Unpaired surrogate at code unit offset 0: DC00");
}

TEST(StringConversions, AMessageTextNeverFails) {
    {
        const ScopedLocaleEnvironment environment("de_DE.ISO-8859-1");
        EXPECT_EQ(toMessageText(u"\u00E4"), "\xE4");
        EXPECT_EQ(toMessageText(u"1 \u20AC"), "1 \x1A");
    }
    const ScopedLocaleEnvironment environment("C");
    EXPECT_EQ(toMessageText(u"\u00E4"), "\xC3\xA4");
    EXPECT_EQ(toMessageText(u"\xDC80z"), "\xEF\xBF\xBDz");
    EXPECT_EQ(toMessageText(u""), "");
}

TEST(StringConversions, AsciiIsAsciiAlone) {
    EXPECT_EQ(toASCIIString(u"a\0\x7F"s), "a\0\x7F"s);
    EXPECT_EQ(toASCIIString(u""), "");
    EXPECT_EQ(failureOf([] { toASCIIString(u"ab\u00E4"); }),
              "Character that ASCII does not have at code unit offset 2: U+00E4");
    EXPECT_EQ(toStringFromASCIIStringLiteral("abc\x7F"), u"abc\x7F");
    EXPECT_EQ(toStringFromASCIIStringLiteral(""), u"");
    EXPECT_EQ(toStringFromASCIIStringLiteral(nullptr), u"");
    EXPECT_EQ(failureOf([] { toStringFromASCIIStringLiteral("a\xC3\xA4"); }),
              "Malformed ASCII at byte offset 1: C3");
}

TEST(StringConversions, WideTextGoesBothWaysWithSurrogatesAndAll) {
    EXPECT_EQ(toWideString(u"a\0\U0001F600"s), L"a\0\U0001F600"s);
    EXPECT_EQ(toString(L"a\0\U0001F600"s), u"a\0\U0001F600"s);
    EXPECT_EQ(toString(toWideString(u"\xDC80\xD800")), u"\xDC80\xD800");
}

TEST(StringConversions, AWideValueThatIsNoCodePointLeavesUnconverted) {
    if (sizeof(wchar_t) == 2) GTEST_SKIP() << "every value of wchar_t is a code unit here";
    EXPECT_THROW(toString(std::wstring(1, std::numeric_limits<wchar_t>::max())), fl::i18n::CvtExceptionBase);
}

TEST(StringConversions, ConvertsSixtyFourMebibytes) {
    std::string bytes(std::size_t{64} << 20, 'x');
    bytes += "\xE4\xB8\xAD";
    const ustring text = toStringFromUTF8String(bytes, false);
    ASSERT_EQ(text.size(), bytes.size() - 2);
    EXPECT_EQ(text.back(), u'\u4E2D');
    EXPECT_EQ(toUTF8String(text, false), bytes);
}

TEST(ToLowerString, LowersFully) {
    EXPECT_EQ(toLowerString(u""), u"");
    EXPECT_EQ(toLowerString(u"MiXeD-09\u00C4"), u"mixed-09\u00E4");
    EXPECT_EQ(toLowerString(u"\u039F\u0394\u039F\u03A3"), u"\u03BF\u03B4\u03BF\u03C2");
    EXPECT_EQ(toLowerString(u"\u0130"), u"i\u0307");
    EXPECT_EQ(toLowerString(u"A\0B"s), u"a\0b"s);
}

TEST(ToLowerString, IsCompleteAroundTheLengthOfItsBuffer) {
    for (std::size_t length = 1020; length <= 1030; ++length) {
        EXPECT_EQ(toLowerString(ustring(length, u'X')), ustring(length, u'x')) << length;
        EXPECT_EQ(toLowerString(ustring(length, u'\u00C4')), ustring(length, u'\u00E4')) << length;
        EXPECT_EQ(toLowerString(u"\u0130" + ustring(length, u'X')), u"i\u0307" + ustring(length, u'x'))
            << length;
    }
    EXPECT_EQ(toLowerString(ustring(100'000, u'X') + u"\u03A3"), ustring(100'000, u'x') + u"\u03C2");
}

TEST(ToLowerASCIIString, MapsCapitalLettersAlone) {
    EXPECT_EQ(toLowerASCIIString(u""), u"");
    EXPECT_EQ(toLowerASCIIString(u"MiXeD-09"), u"mixed-09");
    EXPECT_EQ(toLowerASCIIString(u"@AZ[`az{\0\x7F"s), u"@az[`az{\0\x7F"s);
    EXPECT_EQ(toLowerASCIIString(ustring(100'000, u'Q')), ustring(100'000, u'q'));
}

TEST(ToLowerASCIIString, RefusesAnythingElseAnywhere) {
    for (std::size_t position = 0; position < 20; ++position) {
        ustring text(20, u'a');
        text[position] = u'\x80';
        EXPECT_EQ(failureOf([&] { toLowerASCIIString(text); }), "Invalid character error.") << position;
    }
}

struct Comparison {
    ustring a;
    ustring b;
    int result;
};

TEST(CaselessCompare, GivesTheDistanceOfTheFirstDifferenceOrComparesLengths) {
    const Comparison table[] = {
        {u"", u"", 0},
        {u"", u"x", -1},
        {u"x", u"", 1},
        {u"abc", u"ABD", -1},
        {u"a", u"Z", -25},
        {u"Z", u"a", 25},
        {u"abc", u"ab", 1},
        {u"ab", u"abc", -1},
        {u"AbC", u"aBc", 0},
        {u"a", u"[", 6},
        {u"A", u"[", 6},
        {u"@", u"`", -32},
        {u"\0"s, u"", 1},
        {u"\0"s, u"A", -97},
        {u"\x7F", u"\0"s, 127},
        {u"abcdefgH", u"ABCDEFGh", 0},
        {u"abcdefgHi", u"ABCDEFGhJ", -1},
        {u"abcdXfgh", u"abcdYfgz", -1},
        {u"b", u"aa", 1},
        {u"abcdefgHx", u"ABCDEFGj", -2},
    };
    for (const Comparison& row : table) {
        EXPECT_EQ(caselessCompare(row.a, row.b), row.result) << toUTF8String(row.a, true);
        EXPECT_EQ(caselessCompare(row.b, row.a), -row.result) << toUTF8String(row.a, true);
    }
}

TEST(CaselessCompare, RefusesWhatIsNotAsciiWhereItLooks) {
    EXPECT_EQ(failureOf([] { caselessCompare(u"\u00E4", u"x"); }), "Invalid character error.");
    EXPECT_EQ(failureOf([] { caselessCompare(u"x", u"\u00E4"); }), "Invalid character error.");
    EXPECT_EQ(failureOf([] { caselessCompare(u"\u00E4", u"\u00E4"); }), "Invalid character error.");
    EXPECT_EQ(failureOf([] { caselessCompare(u"abcdefg\u4100", u"abcdefg\u4100"); }),
              "Invalid character error.");
}

TEST(CaselessCompare, DoesNotLookBehindTheShorterTextOrTheFirstDifference) {
    EXPECT_EQ(caselessCompare(u"ab", u"ab\u00E4"), -1);
    EXPECT_EQ(caselessCompare(u"ab\u00E4", u"ab"), 1);
    EXPECT_EQ(caselessCompare(u"", u"\u00E4"), -1);
    EXPECT_EQ(caselessCompare(u"\u00E4", u""), 1);
    EXPECT_EQ(caselessCompare(u"a\u00E4\u00E4\u00E4", u"b\u00E4\u00E4\u00E4"), -1);
    EXPECT_EQ(caselessCompare(u"abcda\u00E4", u"abcdb\u00E4"), -1);
}

TEST(CaselessCompare, FindsADifferenceAtEveryPosition) {
    for (std::size_t length = 1; length < 40; ++length) {
        for (std::size_t position = 0; position < length; ++position) {
            const ustring a(length, u'M');
            ustring b(length, u'm');
            b[position] = u'O';
            ASSERT_EQ(caselessCompare(a, b), -2) << position << " of " << length;
            b[position] = u'\u00E4';
            ASSERT_THROW(caselessCompare(a, b), Exception) << position << " of " << length;
        }
    }
}

TEST(HasWhitespace, FindsUnicodeWhiteSpaceAnywhere) {
    EXPECT_FALSE(hasWhitespace(u""));
    EXPECT_FALSE(hasWhitespace(u"ab"));
    EXPECT_TRUE(hasWhitespace(u"a b"));
    EXPECT_TRUE(hasWhitespace(u" "));
    EXPECT_TRUE(hasWhitespace(u"ab\t"));
    EXPECT_TRUE(hasWhitespace(u"a\0\n"s));
    EXPECT_TRUE(hasWhitespace(u"\u00A0"));
    EXPECT_TRUE(hasWhitespace(u"\u3000"));
    EXPECT_FALSE(hasWhitespace(u"\u200B\uFEFF\U0001F600"));
}

}  // namespace
