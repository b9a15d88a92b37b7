#include <pkgcore/portable/i18n/Utf8.hpp>

#include <pkgcore/platform/i18n/CvtException.hpp>

#include "tests/unit/portable/i18n/Shown.hpp"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

using fl::i18n::CvtInvalidSequence;
using namespace std::string_literals;

namespace {

std::u16string decode(const std::string& bytes, bool lenient) {
    return fl::i18n::portable::decodeUtf8(bytes.data(), bytes.size(), lenient);
}

std::string encode(const std::u16string& text, bool lenient) {
    return fl::i18n::portable::encodeUtf8(text.data(), text.size(), lenient);
}

template <typename Work>
std::string failureOf(Work work) {
    try {
        work();
    } catch (const CvtInvalidSequence& failure) {
        return failure.what();
    }
    return "no failure";
}

struct Pair {
    std::string bytes;
    std::u16string text;
};

void PrintTo(const Pair& pair, std::ostream* out) { *out << test::hex(pair.bytes); }

class WellFormedUtf8 : public ::testing::TestWithParam<Pair> {};

TEST_P(WellFormedUtf8, ConvertsBothWaysStrictlyAndLeniently) {
    for (const bool lenient : {false, true}) {
        EXPECT_EQ(decode(GetParam().bytes, lenient), GetParam().text);
        EXPECT_EQ(encode(GetParam().text, lenient), GetParam().bytes);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, WellFormedUtf8,
    ::testing::Values(Pair{"", u""}, Pair{"a", u"a"}, Pair{"\0"s, u"\0"s}, Pair{"a\0b"s, u"a\0b"s},
                      Pair{"\x7F", u"\x7F"}, Pair{"\xC2\x80", u"\u0080"}, Pair{"\xDF\xBF", u"\u07FF"},
                      Pair{"\xE0\xA0\x80", u"\u0800"}, Pair{"\xED\x9F\xBF", u"\uD7FF"},
                      Pair{"\xEE\x80\x80", u"\uE000"}, Pair{"\xEF\xBB\xBF", u"\uFEFF"},
                      Pair{"\xEF\xBF\xBF", u"\uFFFF"}, Pair{"\xF0\x90\x80\x80", u"\U00010000"},
                      Pair{"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
                      Pair{"na\xC3\xAFve \xE4\xB8\xAD\xF0\x9F\x98\x80!", u"na\u00EFve \u4E2D\U0001F600!"}));

/// Bytes that are no UTF-8, what they become, and how the first failure is described.
struct Malformed {
    std::string bytes;
    std::u16string lenient;
    std::string message;
};

void PrintTo(const Malformed& malformed, std::ostream* out) { *out << test::hex(malformed.bytes); }

class MalformedUtf8 : public ::testing::TestWithParam<Malformed> {};

TEST_P(MalformedUtf8, FailsStrictlyWithTheFirstOffenderNamed) {
    EXPECT_EQ(failureOf([] { decode(GetParam().bytes, false); }), GetParam().message);
}

TEST_P(MalformedUtf8, BecomesOneReplacementCharacterPerMaximalSubpart) {
    EXPECT_EQ(decode(GetParam().bytes, true), GetParam().lenient);
}

TEST_P(MalformedUtf8, IsHandledTheSameBehindAndBeforeOtherText) {
    const Malformed& malformed = GetParam();
    for (const std::size_t length : {1U, 15U, 16U, 31U, 1023U, 1024U, 8189U, 8190U, 8191U, 8192U}) {
        const std::string bytes(length, 'a');
        const std::u16string text(length, u'a');
        EXPECT_EQ(decode(bytes + malformed.bytes + "z", true), text + malformed.lenient + u"z") << length;
        EXPECT_EQ(decode(bytes + "\xE2\x80\x94" + malformed.bytes + "z" + bytes, true),
                  text + u"\u2014" + malformed.lenient + u"z" + text)
            << length;
    }
}

INSTANTIATE_TEST_SUITE_P(
    StrayContinuation, MalformedUtf8,
    ::testing::Values(Malformed{"\x80", u"\uFFFD", "Malformed UTF-8 at byte offset 0: 80"},
                      Malformed{"ab\xBF", u"ab\uFFFD", "Malformed UTF-8 at byte offset 2: BF"},
                      Malformed{"\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD",
                                "Malformed UTF-8 at byte offset 0: 80"},
                      Malformed{"\xC3\xA4\x80", u"\u00E4\uFFFD", "Malformed UTF-8 at byte offset 2: 80"}));

INSTANTIATE_TEST_SUITE_P(
    BytesThatNeverOccur, MalformedUtf8,
    ::testing::Values(Malformed{"\xC0", u"\uFFFD", "Malformed UTF-8 at byte offset 0: C0"},
                      Malformed{"\xC1\xBF", u"\uFFFD\uFFFD", "Malformed UTF-8 at byte offset 0: C1"},
                      Malformed{"\xF5\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD",
                                "Malformed UTF-8 at byte offset 0: F5"},
                      Malformed{"\xFE\xFF", u"\uFFFD\uFFFD", "Malformed UTF-8 at byte offset 0: FE"}));

INSTANTIATE_TEST_SUITE_P(
    Overlong, MalformedUtf8,
    ::testing::Values(
        Malformed{"\xC0\x80", u"\uFFFD\uFFFD", "Malformed UTF-8 at byte offset 0: C0"},
        Malformed{"/\xC0\xAF", u"/\uFFFD\uFFFD", "Malformed UTF-8 at byte offset 1: C0"},
        Malformed{"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD", "Malformed UTF-8 at byte offset 0: E0"},
        Malformed{"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD", "Malformed UTF-8 at byte offset 0: E0"},
        Malformed{"\xF0\x80\x80\xAF", u"\uFFFD\uFFFD\uFFFD\uFFFD", "Malformed UTF-8 at byte offset 0: F0"},
        Malformed{"\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD", "Malformed UTF-8 at byte offset 0: F0"}));

INSTANTIATE_TEST_SUITE_P(Surrogates, MalformedUtf8,
                         ::testing::Values(Malformed{"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD",
                                                     "Malformed UTF-8 at byte offset 0: ED"},
                                           Malformed{"\xED\xBF\xBF", u"\uFFFD\uFFFD\uFFFD",
                                                     "Malformed UTF-8 at byte offset 0: ED"},
                                           Malformed{"\xED\xA0\xBD\xED\xB8\x80",
                                                     u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD",
                                                     "Malformed UTF-8 at byte offset 0: ED"}));

INSTANTIATE_TEST_SUITE_P(BeyondUnicode, MalformedUtf8,
                         ::testing::Values(Malformed{"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD",
                                                     "Malformed UTF-8 at byte offset 0: F4"},
                                           Malformed{"\xF8\x88\x80\x80\x80",
                                                     u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD",
                                                     "Malformed UTF-8 at byte offset 0: F8"}));

INSTANTIATE_TEST_SUITE_P(
    Truncated, MalformedUtf8,
    ::testing::Values(
        Malformed{"\xC3", u"\uFFFD", "Malformed UTF-8 at byte offset 0: C3"},
        Malformed{"\xE4\xB8", u"\uFFFD", "Malformed UTF-8 at byte offset 0: E4 B8"},
        Malformed{"x\xF0\x9F\x98", u"x\uFFFD", "Malformed UTF-8 at byte offset 1: F0 9F 98"},
        Malformed{"\xF0\x9F", u"\uFFFD", "Malformed UTF-8 at byte offset 0: F0 9F"},
        Malformed{"\xC3(", u"\uFFFD(", "Malformed UTF-8 at byte offset 0: C3"},
        Malformed{"\xE4\xB8(", u"\uFFFD(", "Malformed UTF-8 at byte offset 0: E4 B8"},
        Malformed{"\xE4\xB8\xC3\xA4", u"\uFFFD\u00E4", "Malformed UTF-8 at byte offset 0: E4 B8"},
        Malformed{"\xF0\x9F\x98\xF0\x9F\x98\x80", u"\uFFFD\U0001F600",
                  "Malformed UTF-8 at byte offset 0: F0 9F 98"},
        // The examples of the Unicode Standard, tables 3-8 to 3-11.
        Malformed{"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41",
                  u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA",
                  "Malformed UTF-8 at byte offset 0: C0"},
        Malformed{"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB",
                  "Malformed UTF-8 at byte offset 0: F4"},
        Malformed{"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", u"\uFFFD\uFFFD\uFFFD\uFFFDA",
                  "Malformed UTF-8 at byte offset 0: E1 80"}));

struct Unpaired {
    std::u16string text;
    std::string lenient;
    std::string message;
};

void PrintTo(const Unpaired& unpaired, std::ostream* out) { *out << test::hex(unpaired.text); }

class UnpairedSurrogate : public ::testing::TestWithParam<Unpaired> {};

TEST_P(UnpairedSurrogate, FailsStrictlyWithTheFirstOffenderNamed) {
    EXPECT_EQ(failureOf([] { encode(GetParam().text, false); }), GetParam().message);
}

TEST_P(UnpairedSurrogate, BecomesOneReplacementCharacterEach) {
    EXPECT_EQ(encode(GetParam().text, true), GetParam().lenient);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, UnpairedSurrogate,
    ::testing::Values(Unpaired{u"\xD800", "\xEF\xBF\xBD", "Unpaired surrogate at code unit offset 0: D800"},
                      Unpaired{u"ab\xDFFF", "ab\xEF\xBF\xBD",
                               "Unpaired surrogate at code unit offset 2: DFFF"},
                      Unpaired{u"\xDC00\xD800", "\xEF\xBF\xBD\xEF\xBF\xBD",
                               "Unpaired surrogate at code unit offset 0: DC00"},
                      Unpaired{u"\xD83D\xD83D\xDE00", "\xEF\xBF\xBD\xF0\x9F\x98\x80",
                               "Unpaired surrogate at code unit offset 0: D83D"},
                      Unpaired{u"\xD83D\xDE00\xDE00", "\xF0\x9F\x98\x80\xEF\xBF\xBD",
                               "Unpaired surrogate at code unit offset 2: DE00"},
                      Unpaired{u"\u00E4\u4E2D\xDBFFz", "\xC3\xA4\xE4\xB8\xAD\xEF\xBF\xBDz",
                               "Unpaired surrogate at code unit offset 2: DBFF"}));

TEST(Utf8, NamesAnOffenderFarBehindByItsOffsetInTheWholeText) {
    const std::string bytes = std::string(20'000, 'a') + "\xE2\x82\xAC" + std::string(20'000, 'b') + "\xFF";
    EXPECT_EQ(failureOf([&] { decode(bytes, false); }), "Malformed UTF-8 at byte offset 40003: FF");
    const std::u16string text =
        std::u16string(20'000, u'a') + u"\u20AC" + std::u16string(20'000, u'b') + u"\xD800";
    EXPECT_EQ(failureOf([&] { encode(text, false); }), "Unpaired surrogate at code unit offset 40001: D800");
}

TEST(Utf8, ReturnsNoMoreMemoryThanAFewPercentBeyondTheText) {
    const std::string asciiFirst = std::string(10'000, 'a') + [] {
        std::string text;
        for (int i = 0; i < 100'000; ++i) text += "\xE4\xB8\xAD";
        return text;
    }();
    const std::u16string decoded = decode(asciiFirst, false);
    ASSERT_EQ(decoded.size(), 110'000U);
    EXPECT_LE(decoded.capacity(), decoded.size() + decoded.size() / 4);
    const std::string encoded = encode(decoded, false);
    ASSERT_EQ(encoded, asciiFirst);
    EXPECT_LE(encoded.capacity(), 2 * encoded.size());
}

}  // namespace
