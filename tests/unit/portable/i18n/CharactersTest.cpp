#include <pkgcore/platform/i18n/Characters.hpp>

#include "tests/unit/portable/i18n/Shown.hpp"

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

using namespace fl::i18n;
using namespace std::string_literals;

namespace {

std::u16string lowered(const std::u16string& text) {
    std::u16string out(3 * text.size() + 8, u'\0');
    const std::size_t length = detail::transform(out.data(), out.size(), text.data(), text.size(), to_lower);
    out.resize(length);
    return out;
}

std::u16string icuLowered(const std::u16string& text) {
    std::u16string out(3 * text.size() + 8, u'\0');
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t length = u_strToLower(out.data(), static_cast<std::int32_t>(out.size()), text.data(),
                                             static_cast<std::int32_t>(text.size()), "", &error);
    EXPECT_TRUE(U_SUCCESS(error));
    out.resize(static_cast<std::size_t>(length));
    return out;
}

struct Case {
    std::u16string text;
    std::u16string lower;
};

void PrintTo(const Case& textCase, std::ostream* out) { *out << test::hex(textCase.text); }

class Lowering : public ::testing::TestWithParam<Case> {};

TEST_P(Lowering, IsFullAndInTheRootLocale) { EXPECT_EQ(lowered(GetParam().text), GetParam().lower); }

INSTANTIATE_TEST_SUITE_P(
    Texts, Lowering,
    ::testing::Values(
        Case{u"", u""}, Case{u"MiXeD-09", u"mixed-09"}, Case{u"@[`{", u"@[`{"}, Case{u"A\0B"s, u"a\0b"s},
        Case{u"\u00C4\u00D6", u"\u00E4\u00F6"}, Case{u"I\u0130", u"ii\u0307"},
        Case{u"\u00DF\u1E9E", u"\u00DF\u00DF"},
        // Sigma at the end of a word, alone, and within one; the ASCII before and behind it counts.
        Case{u"\u039F\u0394\u039F\u03A3", u"\u03BF\u03B4\u03BF\u03C2"}, Case{u"\u03A3", u"\u03C3"},
        Case{u"AS\u03A3", u"as\u03C2"}, Case{u"AS\u03A3S", u"as\u03C3s"}, Case{u"A.\u03A3 B", u"a.\u03C2 b"},
        Case{u"A \u03A3", u"a \u03C3"}, Case{u"\U00010400", u"\U00010428"},
        Case{u"A\xD800Z\xDC00", u"a\xD800z\xDC00"}));

TEST(Lowering, KeepsSigmaRightBehindLongAscii) {
    for (std::size_t length = 0; length < 70; ++length) {
        const std::u16string ascii(length, u'Q');
        EXPECT_EQ(lowered(ascii + u"\u03A3"),
                  std::u16string(length, u'q') + (length == 0 ? u"\u03C3" : u"\u03C2"));
    }
}

TEST(Lowering, AgreesWithIcuOnRandomText) {
    std::mt19937 random(20240607);
    for (int i = 0; i < 5000; ++i) {
        std::u16string text(random() % 60, u'\0');
        for (char16_t& unit : text) {
            unit = static_cast<char16_t>(random() % 4 == 0 ? 0x370 + random() % 0x100 : random() % 0x80);
        }
        ASSERT_EQ(lowered(text), icuLowered(text));
    }
}

/// Transforms into `capacity` units between guards.
void expectContract(const std::u16string& text, std::size_t capacity) {
    constexpr std::size_t kGuard = 32;
    const std::u16string expected = icuLowered(text);
    std::vector<char16_t> out(capacity + kGuard, u'#');
    const std::size_t length = detail::transform(out.data(), capacity, text.data(), text.size(), to_lower);
    ASSERT_EQ(length, expected.size()) << "capacity " << capacity;
    for (std::size_t i = capacity; i < out.size(); ++i) ASSERT_EQ(out[i], u'#') << "capacity " << capacity;
    if (length <= capacity) {
        ASSERT_EQ(std::u16string(out.data(), length), expected) << "capacity " << capacity;
    }
}

TEST(Lowering, GivesTheLengthThatIsNeededAndStaysWithinTheBuffer) {
    const std::u16string texts[] = {std::u16string(40, u'X'),
                                    u"\u0130\u0130\u0130\u0130\u0130\u0130\u0130\u0130",
                                    std::u16string(20, u'X') + u"\u0130" + std::u16string(20, u'X'),
                                    std::u16string(39, u'X') + u"\u0130"};
    for (const std::u16string& text : texts) {
        for (std::size_t capacity = 0; capacity <= 64; ++capacity) {
            ASSERT_NO_FATAL_FAILURE(expectContract(text, capacity));
        }
    }
}

TEST(Lowering, TakesANullBufferOfNoCapacity) {
    EXPECT_EQ(detail::transform(nullptr, 0, u"ABC", 3, to_lower), 3U);
    EXPECT_EQ(detail::transform(nullptr, 0, u"AB\u0130", 3, to_lower), 4U);
}

std::size_t firstWhiteSpace(const std::u16string& text) {
    return detail::scan(text.data(), text.size(), detail::white_space_class, is_posix);
}

TEST(Scanning, FindsTheFirstWhiteSpace) {
    EXPECT_EQ(firstWhiteSpace(u""), 0U);
    EXPECT_EQ(firstWhiteSpace(u"abc"), 3U);
    EXPECT_EQ(firstWhiteSpace(u"a b c"), 1U);
    EXPECT_EQ(firstWhiteSpace(u"abc\n"), 3U);
    EXPECT_EQ(firstWhiteSpace(u"\u00A0"), 0U);
    EXPECT_EQ(firstWhiteSpace(u"a\0b\u3000"s), 3U);
    EXPECT_EQ(firstWhiteSpace(std::u16string(1000, u'\u4E2D') + u"\u2009"), 1000U);
}

TEST(Scanning, KnowsExactlyTheCharactersOfTheUnicodeProperty) {
    for (UChar32 c = 0; c <= 0x10FFFF; ++c) {
        char16_t units[2];
        std::size_t length = 0;
        U16_APPEND_UNSAFE(units, length, c);
        const bool found = detail::scan(units, length, 16, is_posix) != length;
        ASSERT_EQ(found, u_hasBinaryProperty(c, UCHAR_WHITE_SPACE) != 0) << "U+" << std::hex << c;
    }
}

TEST(Scanning, FindsNothingInClassesThatAreNone) {
    EXPECT_EQ(detail::scan(u" ", 1, 0, is_posix), 1U);
    EXPECT_EQ(detail::scan(u" ", 1, ~16U, is_posix), 1U);
    EXPECT_EQ(detail::scan(u" ", 1, ~0U, is_posix), 0U);
}

}  // namespace
