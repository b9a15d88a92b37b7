#include <pkgcore/platform/i18n/Codecvt.hpp>

#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/platform/i18n/CvtException.hpp>

#include "tests/support/ScopedEnvironment.hpp"
#include "tests/unit/portable/i18n/Shown.hpp"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <type_traits>

using namespace fl::i18n;
using namespace std::string_literals;

namespace {

std::u16string decode(const std::string& encoding, const std::string& bytes, bool lenient = false) {
    const codecvt_string_to_ustring converter(encoding, lenient);
    return to_ustring(bytes, converter);
}

std::string encode(const std::string& encoding, const std::u16string& text, bool lenient = false) {
    const codecvt_ustring_to_string converter(encoding, lenient);
    return to_string(text, converter);
}

template <typename Failure, typename Work>
std::string failureOf(Work work) {
    try {
        work();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no failure";
}

struct Sample {
    const char* encoding;
    std::string bytes;
    std::u16string text;
};

void PrintTo(const Sample& sample, std::ostream* out) {
    *out << sample.encoding << ": " << test::hex(sample.text);
}

class Encoding : public ::testing::TestWithParam<Sample> {};

TEST_P(Encoding, ConvertsBothWaysStrictlyAndLeniently) {
    for (const bool lenient : {false, true}) {
        EXPECT_EQ(decode(GetParam().encoding, GetParam().bytes, lenient), GetParam().text);
        EXPECT_EQ(encode(GetParam().encoding, GetParam().text, lenient), GetParam().bytes);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Names, Encoding,
    ::testing::Values(
        Sample{"UTF-8", "\xC3\xA4", u"\u00E4"}, Sample{"utf8", "\xC3\xA4", u"\u00E4"},
        Sample{"Utf_8", "\xC3\xA4", u"\u00E4"}, Sample{"ISO-8859-1", "\xE4\xA4", u"\u00E4\u00A4"},
        Sample{"iso88591", "\xE4", u"\u00E4"}, Sample{"ISO-8859-15", "\xE4\xA4", u"\u00E4\u20AC"},
        Sample{"ISO-8859-7", "\xE1", u"\u03B1"}, Sample{"windows-1252", "\x80", u"\u20AC"},
        Sample{"KOI8-R", "\xC1", u"\u0430"}, Sample{"Shift_JIS", "a\x93\xFA\x96{", u"a\u65E5\u672C"},
        Sample{"EUC-JP", "\xC6\xFC\xCB\xDC", u"\u65E5\u672C"}, Sample{"EUC-KR", "\xC7\xD1", u"\uD55C"},
        Sample{"Big5", "\xA4\xA4", u"\u4E2D"},
        Sample{"GB18030", "\xD6\xD0\x95\x32\x82\x36", u"\u4E2D\U00020000"},
        Sample{"UTF-16BE", "\0a\xD8\x3D\xDE\0"s, u"a\U0001F600"},
        Sample{"UTF-16LE", "a\0\x3D\xD8\0\xDE"s, u"a\U0001F600"},
        Sample{"UTF-32BE", "\0\1\xF6\0"s, u"\U0001F600"}, Sample{"US-ASCII", "a\0b"s, u"a\0b"s}));

// The text ends in the initial state, and a NUL is text.
INSTANTIATE_TEST_SUITE_P(Stateful, Encoding,
                         ::testing::Values(Sample{"ISO-2022-JP", "a\x1B$BF|K\\\x1B(Bb", u"a\u65E5\u672Cb"},
                                           Sample{"ISO-2022-JP", "\x1B$BF|\x1B(B", u"\u65E5"},
                                           Sample{"ISO-2022-JP", "\0"s, u"\0"s},
                                           Sample{"UTF-7", "+ZeU-", u"\u65E5"}));

TEST(Encoding, Utf16DecodesByItsByteOrderMark) {
    EXPECT_EQ(decode("UTF-16", "\xFE\xFF\0a"s), u"a");
    EXPECT_EQ(decode("UTF-16",
                     "\xFF\xFE"
                     "a\0"s),
              u"a");
    EXPECT_EQ(decode("UTF-16", encode("UTF-16", u"a\U0001F600")), u"a\U0001F600");
}

struct Failing {
    const char* encoding;
    std::string bytes;
    std::u16string lenient;
    std::string message;
};

void PrintTo(const Failing& failing, std::ostream* out) {
    *out << failing.encoding << ": " << test::hex(failing.bytes);
}

class MalformedBytes : public ::testing::TestWithParam<Failing> {};

TEST_P(MalformedBytes, FailStrictlyWithTheFirstOffenderNamed) {
    EXPECT_EQ(failureOf<CvtInvalidSequence>([] { decode(GetParam().encoding, GetParam().bytes); }),
              GetParam().message);
}

TEST_P(MalformedBytes, BecomeReplacementCharacters) {
    EXPECT_EQ(decode(GetParam().encoding, GetParam().bytes, true), GetParam().lenient);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, MalformedBytes,
    ::testing::Values(
        Failing{"US-ASCII",
                "ab\xE4\xFF"
                "c",
                u"ab\uFFFD\uFFFDc", "Malformed US-ASCII at byte offset 2: E4"},
        Failing{"Shift_JIS", "a\x93\xFA\x96", u"a\u65E5\uFFFD",
                "Unfinished Shift_JIS sequence at byte offset 3: 96"},
        Failing{"Shift_JIS", "\xFFz", u"\uFFFDz", "Malformed Shift_JIS at byte offset 0: FF"},
        Failing{"EUC-JP", "\xC6\xFC\xFF", u"\u65E5\uFFFD", "Malformed EUC-JP at byte offset 2: FF"},
        Failing{"ISO-8859-7", "\xD2", u"\uFFFD", "Malformed ISO-8859-7 at byte offset 0: D2"},
        Failing{"UTF-16BE", "\0a\xD8\0\0b"s, u"a\uFFFDb", "Malformed UTF-16BE at byte offset 2: D8 00"},
        Failing{"UTF-16BE", "\0a\0"s, u"a\uFFFD", "Unfinished UTF-16BE sequence at byte offset 2: 00"}));

TEST(MalformedBytes, FarBehindAreNamedByTheirOffsetInTheWholeText) {
    EXPECT_EQ(failureOf<CvtInvalidSequence>([] { decode("US-ASCII", std::string(3'000'000, 'a') + "\x80"); }),
              "Malformed US-ASCII at byte offset 3000000: 80");
}

struct Unmappable {
    const char* encoding;
    std::u16string text;
    std::string lenient;
    std::string message;
};

void PrintTo(const Unmappable& unmappable, std::ostream* out) {
    *out << unmappable.encoding << ": " << test::hex(unmappable.text);
}

class UnmappableCharacter : public ::testing::TestWithParam<Unmappable> {};

TEST_P(UnmappableCharacter, FailsStrictlyWithTheFirstOffenderNamed) {
    EXPECT_EQ(failureOf<CvtUnmappableCharacter>([] { encode(GetParam().encoding, GetParam().text); }),
              GetParam().message);
}

TEST_P(UnmappableCharacter, BecomesTheSubstitutionCharacterOfTheTarget) {
    EXPECT_EQ(encode(GetParam().encoding, GetParam().text, true), GetParam().lenient);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, UnmappableCharacter,
    ::testing::Values(
        Unmappable{"ISO-8859-1", u"1 \u20AC", "1 \x1A",
                   "Character that ISO-8859-1 does not have at code unit offset 2: U+20AC"},
        Unmappable{"ISO-8859-15", u"\u00A4\u00A4", "\x1A\x1A",
                   "Character that ISO-8859-15 does not have at code unit offset 0: U+00A4"},
        Unmappable{"US-ASCII", u"ab\U0001F600z", "ab\x1Az",
                   "Character that US-ASCII does not have at code unit offset 2: U+1F600"},
        Unmappable{"Shift_JIS", u"\u65E5\U0001F600", "\x93\xFA\xFC\xFC",
                   "Character that Shift_JIS does not have at code unit offset 1: U+1F600"},
        // Invisible characters are characters: a joiner or a soft hyphen must not vanish unnoticed.
        Unmappable{"ISO-8859-1", u"a\u200Db",
                   "a\x1A"
                   "b",
                   "Character that ISO-8859-1 does not have at code unit offset 1: U+200D"},
        Unmappable{"US-ASCII", u"a\u00AD", "a\x1A",
                   "Character that US-ASCII does not have at code unit offset 1: U+00AD"},
        // No best fit either: a full-width letter is not the letter.
        Unmappable{"windows-1252", u"\uFF41", "\x1A",
                   "Character that windows-1252 does not have at code unit offset 0: U+FF41"}));

TEST(UnmappableCharacter, AnUnpairedSurrogateIsAMalformedText) {
    EXPECT_EQ(failureOf<CvtInvalidSequence>([] { encode("ISO-8859-1", u"a\xD800z"); }),
              "Unpaired surrogate at code unit offset 1: D800");
    EXPECT_EQ(failureOf<CvtInvalidSequence>([] { encode("ISO-8859-1", u"az\xD800"); }),
              "Unpaired surrogate at code unit offset 2: D800");
    EXPECT_EQ(encode("ISO-8859-1", u"a\xD800z\xDC00", true), "a\x1Az\x1A");
}

TEST(UnmappableCharacter, FarBehindIsNamedByItsOffsetInTheWholeText) {
    const std::u16string text = std::u16string(3'000'000, u'\u00E4') + u"\u20AC";
    EXPECT_EQ(failureOf<CvtUnmappableCharacter>([&] { encode("ISO-8859-1", text); }),
              "Character that ISO-8859-1 does not have at code unit offset 3000000: U+20AC");
}

TEST(Codecvt, RefusesAnEncodingThatNobodyKnows) {
    EXPECT_EQ(failureOf<CvtUnknownEncoding>([] { codecvt_string_to_ustring("no-such", true); }),
              "Unknown encoding: no-such");
    EXPECT_EQ(failureOf<CvtUnknownEncoding>([] { codecvt_ustring_to_string("no-such", false); }),
              "Unknown encoding: no-such");
    EXPECT_THROW(codecvt_string_to_ustring("UTF-16\0BE"s, true), CvtUnknownEncoding);
    EXPECT_THROW(codecvt_string_to_ustring("UTF-8\0"s, true), CvtUnknownEncoding);
}

TEST(Codecvt, MayBeUsedAgainAfterAFailure) {
    const codecvt_string_to_ustring converter("ISO-2022-JP", false);
    const std::string unfinished = "\x1B$BF";
    EXPECT_THROW(to_ustring(unfinished, converter), CvtInvalidSequence);
    EXPECT_EQ(to_ustring(std::string("Fz"), converter), u"Fz");
}

TEST(Codecvt, ConvertsWhatIsLongerThanItsBuffers) {
    for (const std::size_t shift : {0U, 1U, 2U, 3U}) {
        std::u16string text(shift, u'a');
        while (text.size() < 50'000) text += u"\u65E5\u672Cx";
        for (const char* encoding : {"EUC-JP", "ISO-2022-JP", "UTF-16LE", "UTF-32", "GB18030"}) {
            EXPECT_EQ(decode(encoding, encode(encoding, text)), text) << encoding;
        }
    }
}

// ICU is fed in pieces of a megabyte. Most end early, when the output is full; the line breaks of HZ give
// none.
TEST(Codecvt, ReadsOnWhereAPieceEndsWithinASequence) {
    std::string bytes = "a";
    while (bytes.size() < 2'500'000) bytes += "~\n";
    EXPECT_EQ(decode("HZ", bytes + "b"), u"ab");
}

TEST(Codecvt, AnEmptyTextIsEmptyInEveryEncoding) {
    for (const char* encoding : {"", "UTF-8", "ISO-8859-1", "Shift_JIS", "ISO-2022-JP"}) {
        EXPECT_EQ(decode(encoding, ""), u"") << encoding;
        EXPECT_EQ(encode(encoding, u""), "") << encoding;
    }
}

TEST(Codecvt, AnEmptyNameIsTheEncodingOfTheEnvironment) {
    const test::ScopedLocaleEnvironment environment("de_DE.ISO-8859-15");
    EXPECT_EQ(decode("", "\xA4"), u"\u20AC");
    EXPECT_EQ(encode("", u"\u20AC"), "\xA4");
    EXPECT_EQ(to_string(std::u16string(u"\u20AC")), "\xA4");
}

TEST(Codecvt, AnEncodingOfTheEnvironmentThatNobodyKnowsCountsAsUtf8) {
    const test::ScopedLocaleEnvironment environment("xx_XX.no-such");
    EXPECT_EQ(decode("", "\xC3\xA4"), u"\u00E4");
    EXPECT_EQ(to_string(std::u16string(u"\u00E4")), "\xC3\xA4");
}

TEST(Codecvt, TheConversionWithoutAConverterIsStrict) {
    const test::ScopedLocaleEnvironment environment("de_DE.ISO-8859-1");
    EXPECT_THROW(to_string(std::u16string(u"\u20AC")), CvtUnmappableCharacter);
}

TEST(CodecvtAscii, ConvertsAsciiAlone) {
    EXPECT_EQ(to_string(std::u16string(u"a\0\x7F", 3), codecvt_ustring_to_ascii(false)), "a\0\x7F"s);
    EXPECT_EQ(to_ustring("az\x7F", codecvt_ascii_to_ustring(false)), u"az\x7F");
    EXPECT_EQ(to_ustring("", codecvt_ascii_to_ustring(false)), u"");
    EXPECT_EQ(to_ustring(nullptr, codecvt_ascii_to_ustring(false)), u"");
}

TEST(CodecvtAscii, ConvertsWhatIsLongerThanItsBuffers) {
    const std::string bytes(50'000, 'x');
    const std::u16string text(50'000, u'x');
    EXPECT_TRUE(to_string(text, codecvt_ustring_to_ascii(false)) == bytes);
    EXPECT_TRUE(to_ustring(bytes.c_str(), codecvt_ascii_to_ustring(false)) == text);
}

TEST(CodecvtAscii, NamesTheFirstOffender) {
    const auto toAscii = [](const std::u16string& text) { to_string(text, codecvt_ustring_to_ascii(false)); };
    EXPECT_EQ(failureOf<CvtUnmappableCharacter>([&] { toAscii(u"ab\u0080"); }),
              "Character that ASCII does not have at code unit offset 2: U+0080");
    EXPECT_EQ(failureOf<CvtUnmappableCharacter>([&] { toAscii(u"\U0001F600"); }),
              "Character that ASCII does not have at code unit offset 0: U+1F600");
    EXPECT_EQ(failureOf<CvtInvalidSequence>([&] { toAscii(u"a\xDC00"); }),
              "Unpaired surrogate at code unit offset 1: DC00");
    EXPECT_EQ(failureOf<CvtInvalidSequence>([] { to_ustring("abc\x80", codecvt_ascii_to_ustring(false)); }),
              "Malformed ASCII at byte offset 3: 80");
}

TEST(CodecvtAscii, SubstitutesCharacterByCharacterWhenLenient) {
    const std::u16string text = u"a\u00E4\U0001F600\xD800" + std::u16string(20'000, u'\u4E2D') + u"z";
    EXPECT_EQ(to_string(text, codecvt_ustring_to_ascii(true)), "a" + std::string(20'003, '\x1A') + "z");
    EXPECT_EQ(to_ustring("a\x80\xFFz", codecvt_ascii_to_ustring(true)), u"a\uFFFD\uFFFDz");
}

TEST(CvtException, IsOneFamilyThatCopiesWithoutThrowing) {
    static_assert(std::is_base_of_v<std::runtime_error, CvtExceptionBase>);
    static_assert(std::is_base_of_v<CvtExceptionBase, CvtInvalidSequence>);
    static_assert(std::is_base_of_v<CvtExceptionBase, CvtUnmappableCharacter>);
    static_assert(std::is_base_of_v<CvtExceptionBase, CvtUnknownEncoding>);
    static_assert(std::is_nothrow_copy_constructible_v<CvtInvalidSequence>);
    EXPECT_THROW(decode("UTF-8", "\xFF"), CvtExceptionBase);
}

}  // namespace
