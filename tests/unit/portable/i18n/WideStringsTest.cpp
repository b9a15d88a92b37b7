#include <pkgcore/platform/i18n/Conversion.hpp>

#include <pkgcore/platform/i18n/CvtException.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>

using namespace fl::i18n;
using namespace std::string_literals;

namespace {

TEST(WideStrings, HoldUtf16OrUtf32AsWideLiteralsDo) {
    const std::wstring wide = L"a\0\u00E4\u4E2D\U0001F600z"s;
    const std::u16string text = u"a\0\u00E4\u4E2D\U0001F600z"s;
    EXPECT_EQ(to_wstring(text), wide);
    EXPECT_EQ(to_ustring(wide), text);
    EXPECT_EQ(to_wstring(u""), L"");
    EXPECT_EQ(to_ustring(L""), u"");
}

TEST(WideStrings, PassEveryUnpairedSurrogateUnchangedBothWays) {
    for (unsigned unit = 0xD800; unit <= 0xDFFF; ++unit) {
        const std::u16string text{u'a', static_cast<char16_t>(unit), u'b'};
        const std::wstring wide{L'a', static_cast<wchar_t>(unit), L'b'};
        ASSERT_EQ(to_wstring(text), wide) << std::hex << unit;
        ASSERT_EQ(to_ustring(wide), text) << std::hex << unit;
    }
    EXPECT_EQ(to_ustring(to_wstring(u"\xD800")), u"\xD800");
    EXPECT_EQ(to_ustring(to_wstring(u"\xDC00\xD800\xD800\xDC00\xD800")), u"\xDC00\xD800\xD800\xDC00\xD800");
}

TEST(WideStrings, BringEveryTextBack) {
    std::mt19937 random(20240606);
    for (int i = 0; i < 2000; ++i) {
        std::u16string text(random() % 40, u'\0');
        for (char16_t& unit : text) {
            unit = static_cast<char16_t>(random() % 2 == 0 ? 0xD800 + random() % 0x800 : random() % 0x10000);
        }
        ASSERT_EQ(to_ustring(to_wstring(text)), text);
    }
    std::u16string longText;
    while (longText.size() < 100'000) longText += u"a\u4E2D\U0001F600";
    for (std::size_t shift = 0; shift < 4; ++shift) {
        ASSERT_EQ(to_ustring(to_wstring(longText)), longText);
        longText.insert(longText.begin(), u'x');
    }
}

TEST(WideStrings, RefuseAValueThatIsNoCodePoint) {
    if (sizeof(wchar_t) == 2) GTEST_SKIP() << "every value of wchar_t is a code unit here";
    const auto refusal = [](wchar_t value) -> std::string {
        try {
            to_ustring(std::wstring{L'a', value});
        } catch (const CvtInvalidSequence& failure) {
            return failure.what();
        }
        return "no failure";
    };
    EXPECT_EQ(refusal(static_cast<wchar_t>(0x10FFFF)), "no failure");
    EXPECT_EQ(refusal(static_cast<wchar_t>(0x110000)),
              "Wide character that is no code point at character offset 1: 110000");
    EXPECT_EQ(refusal(static_cast<wchar_t>(-1)),
              "Wide character that is no code point at character offset 1: FFFFFFFF");
    EXPECT_EQ(refusal(std::numeric_limits<wchar_t>::min()),
              "Wide character that is no code point at character offset 1: 80000000");
}

}  // namespace
