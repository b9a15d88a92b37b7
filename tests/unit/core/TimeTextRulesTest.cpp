// Which texts are times.

#include <pkgcore/core/TimeConversions.hpp>

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <clocale>
#include <locale>
#include <string>

using boost::posix_time::ptime;
using opc::convertStringToTime;
using opc::convertTimeToString;
using opc::ustring;
using namespace std::string_literals;

namespace {

/// The time of a text in boost's own form; null stands for no time.
ptime timeOf(const char* text) {
    return text == nullptr ? ptime(boost::posix_time::not_a_date_time)
                           : boost::posix_time::time_from_string(text);
}

std::string shown(const ustring& text) {
    return testing::PrintToString(text.substr(0, 40)) + ", " + std::to_string(text.size()) + " units";
}

struct Row {
    ustring text;
    const char* time;
};

void expectTimes(std::initializer_list<Row> rows) {
    for (const Row& row : rows) EXPECT_EQ(convertStringToTime(row.text), timeOf(row.time)) << shown(row.text);
}

void expectNoTimes(std::initializer_list<ustring> texts) {
    for (const ustring& text : texts) {
        EXPECT_TRUE(convertStringToTime(text).is_not_a_date_time()) << shown(text);
    }
}

TEST(TimeTextRules, TheExactFormIsReadInAllItsRange) {
    expectTimes({
        {u"2021-03-04T05:06:07Z", "2021-03-04 05:06:07"},
        {u"1400-01-01T00:00:00Z", "1400-01-01 00:00:00"},
        {u"9999-12-31T23:59:59Z", "9999-12-31 23:59:59"},
        {u"1969-12-31T23:59:59Z", "1969-12-31 23:59:59"},
        {u"1582-10-10T00:00:00Z", "1582-10-10 00:00:00"},  // the calendar is the Gregorian one throughout
        {u"2038-01-19T03:14:08Z", "2038-01-19 03:14:08"},
    });
}

TEST(TimeTextRules, YearsOutside1400To9999AreNone) {
    expectNoTimes({u"1399-12-31T23:59:59Z", u"0000-01-01T00:00:00Z", u"0001-01-01T00:00:00Z",
                   u"10000-01-01T00:00:00Z", u"99999-01-01T00:00:00Z", u"+2021-03-04T05:06:07Z",
                   u"-2021-03-04T05:06:07Z", u"+12021-03-04T05:06:07Z"});
}

TEST(TimeTextRules, DaysAreThoseOfTheCalendar) {
    expectTimes({
        {u"2020-02-29T05:06:07Z", "2020-02-29 05:06:07"},
        {u"2000-02-29T00:00:00Z", "2000-02-29 00:00:00"},
        {u"1600-02-29T00:00:00Z", "1600-02-29 00:00:00"},
    });
    expectNoTimes({u"2021-02-29T05:06:07Z", u"1900-02-29T05:06:07Z", u"2100-02-29T05:06:07Z",
                   u"2021-02-30T05:06:07Z", u"2021-04-31T05:06:07Z", u"2021-00-04T05:06:07Z",
                   u"2021-13-04T05:06:07Z", u"2021-99-04T05:06:07Z", u"2021-03-00T05:06:07Z",
                   u"2021-03-32T05:06:07Z"});
}

TEST(TimeTextRules, HoursMinutesAndSecondsCarryOver) {
    expectTimes({
        {u"2021-03-04T24:00:00Z", "2021-03-05 00:00:00"},
        {u"2021-03-04T23:60:00Z", "2021-03-05 00:00:00"},
        {u"2021-03-04T23:59:60Z", "2021-03-05 00:00:00"},  // a leap second
        {u"2021-12-31T99:99:99Z", "2022-01-04 04:40:39"},
        {u"9999-12-31T22:99:99Z", "9999-12-31 23:40:39"},
    });
}

TEST(TimeTextRules, NothingCarriesOverIntoTheYear10000) {
    expectNoTimes(
        {u"9999-12-31T24:00:00Z", u"9999-12-31T23:60:00Z", u"9999-12-31T23:59:60Z", u"9999-12-31T99:99:99Z"});
}

TEST(TimeTextRules, ALongerTextHasItsTInTheEleventhPlace) {
    expectNoTimes({u"2021-03-04 05:06:07Z", u"2021-03-04t05:06:07Z", u"2021-03-04_05:06:07Z",
                   u"2021-03-04\u0422"
                   u"05:06:07Z",  // the Cyrillic letter
                   u" 2021-03-04T05:06:07Z", u"\t2021-03-04T05:06:07Z", u"2021-3-04T05:06:07Z",
                   u"20210304T050607Z", u"not-a-date-time", u"minimum-date-time", u"maximum-date-time"});
}

TEST(TimeTextRules, ALongerTextReachesToTheSeconds) {
    expectTimes({{u"2021-03-04T05:06:07", "2021-03-04 05:06:07"}});
    expectNoTimes({u"2021-03-04T0", u"2021-03-04T05", u"2021-03-04T05:", u"2021-03-04T05:06",
                   u"2021-03-04T05:06Z", u"2021-03-04T05:06:", u"2021-03-04T05:06:0", u"2021-03-04T050607Z",
                   u"2021-03-04T05:06:7Z"});
}

TEST(TimeTextRules, NothingStandsBehindTheTime) {
    expectNoTimes({u"2021-03-04T05:06:07Z ", u"2021-03-04T05:06:07Zx", u"2021-03-04T05:06:07ZZ",
                   u"2021-03-04T05:06:07Z\n", u"2021-03-04T05:06:07Z\0"s, u"2021-03-04T05:06:07.250Z",
                   u"2021-03-04T05:06:07,250Z", u"2021-03-04T05:06:07+01:00", u"2021-03-04T05:06:07 Z",
                   u"2021-03-04T05:06:07Z2021-03-04T05:06:07Z"});
}

TEST(TimeTextRules, NumbersHaveTheirTwoOrFourDigits) {
    expectNoTimes({u"21-03-04T05:06:07Z", u"0021-03-4T05:06:07Z", u"202-003-04T05:06:07Z",
                   u"2021-03-4T05:06:07ZZ", u"2021-03-04T5:06:07ZZ", u"2021-03-04T05:6:007Z",
                   u"2021-03-04T-5:06:07Z", u"2021-03-04T+5:06:07Z", u"2021-+3-04T05:06:07Z",
                   u"2021--3-04T05:06:07Z", u"20a1-03-04T05:06:07Z", u"0x21-03-04T05:06:07Z",
                   u"2021-03-04Txx:06:07Z", u"2021-03-04T05:06:0xZ", u"2,21-03-04T05:06:07Z",
                   u"2021-03-04T05:06:\0"
                   u"7Z"s});
}

TEST(TimeTextRules, DigitsAreThoseOfASCII) {
    expectNoTimes({u"\u0662\u0660\u0662\u0661-03-04T05:06:07Z",                      // Arabic-Indic
                   u"\uFF12\uFF10\uFF12\uFF11-03-04T05:06:07Z",                      // full width
                   u"2021-\u0966\u0969-04T05:06:07Z", u"2021-03-04T05:06:0\u00B2Z",  // Devanagari, a square
                   u"2021-03-04T05:06:0\U0001D7D7Z", u"2021-03-04T\u06F0\u06F5:06:07Z"});
}

TEST(TimeTextRules, SeparatorsButTheTMayBeAnySingleCharacter) {
    for (const ustring& mark :
         {u"-"s, u"/"s, u" "s, u"x"s, u"5"s, u"\0"s, u"\u2013"s, u"\xD800"s, u"\uFFFF"s}) {
        const ustring text = u"2021" + mark + u"03" + mark + u"04T05" + mark + u"06" + mark + u"07" + mark;
        EXPECT_EQ(convertStringToTime(text), timeOf("2021-03-04 05:06:07")) << shown(text);
    }
    expectTimes({
        {u"2021-03-04T05:06:07z", "2021-03-04 05:06:07"},
        {u"2021-03-04T05:06:07\U0001F600", "2021-03-04 05:06:07"},  // one character of two units
        {u"2021\U0001F600"
         u"3-04T05:06:07Z",
         "2021-03-04 05:06:07"},
    });
    expectNoTimes(
        {u"2021\U0001F600"
         u"03-04T05:06:07Z"});  // moves the T
}

TEST(TimeTextRules, BlanksBeforeTheYearTheMonthAndTheDayAreSkipped) {
    expectTimes({
        {u" 2021-03-04", "2021-03-04 00:00:00"},
        {u"\t\n 2021", "2021-01-01 00:00:00"},
        {u"2021- 3-04T05:06:07Z", "2021-03-04 05:06:07"},
        {u"2021-3- 04T05:06:07Z", "2021-03-04 05:06:07"},
        {u" 2021-3-04T05:06:07Z", "2021-03-04 05:06:07"},
    });
    expectNoTimes({u"2021-03- 4T05:06:07Z", u"2021-03-04T 5:06:07Z", u"2021-03-04T05: 6:07Z",
                   u"2021-03-04T05:06: 7Z", u"2021 "s + u" 3-4T05:06:07Z", u"2 21-03-04T05:06:07Z"});
}

TEST(TimeTextRules, UpToElevenUnitsMayEndBehindAnyPartOfTheDateOrTheMarkThatFollows) {
    expectTimes({
        {u"2021", "2021-01-01 00:00:00"},
        {u"2021-", "2021-01-01 00:00:00"},
        {u"2021-3", "2021-03-01 00:00:00"},
        {u"2021-03", "2021-03-01 00:00:00"},
        {u"2021-03-", "2021-03-01 00:00:00"},
        {u"2021-3-04", "2021-03-04 00:00:00"},
        {u"2021-03-04", "2021-03-04 00:00:00"},
        {u"2021-03-04T", "2021-03-04 00:00:00"},
        {u"2021-03-04 ", "2021-03-04 00:00:00"},
        {u"2021-03-04x", "2021-03-04 00:00:00"},
    });
    expectNoTimes({u"", u" ", u"   ", u"x", u"T", u"Z", u"-", u"2", u"20", u"202", u"2021-0", u"2021-03-0",
                   u"2021-03-4", u"2021-3-4", u"21-03-04", u"1399", u"2021-13", u"2021-02-29", u"05:06:07Z"});
}

TEST(TimeTextRules, InfinitiesHaveNames) {
    const ptime future(boost::posix_time::pos_infin);
    const ptime past(boost::posix_time::neg_infin);
    EXPECT_EQ(convertStringToTime(u"+infinity"), future);
    EXPECT_EQ(convertStringToTime(u"-infinity"), past);
    EXPECT_EQ(convertStringToTime(u" +INFINITY"), future);
    EXPECT_EQ(convertStringToTime(u"2021-03-04T+infinity"), future);
    EXPECT_EQ(convertStringToTime(u"2021-03-04T05:06:-infinity"), past);
    EXPECT_EQ(convertStringToTime(u"2021-03-04Tminimum-date-time"), timeOf("1400-01-01 00:00:00"));
    EXPECT_EQ(convertStringToTime(u"2021-03-04T05:maximum-date-time"), timeOf("9999-12-31 23:59:59.999999"));
    expectNoTimes({u"infinity", u"+infinit", u"+infinityx", u"2021-03-04Tnot-a-date-time",
                   u"2021-03-04T+infinity ", u"2021-03-04T+infinite"});
}

TEST(TimeTextRules, TextThatIsNoUnicodeIsNoTime) {
    expectNoTimes({u"\xD800", u"\xDC00\xD800",
                   u"\xDC00"
                   u"2021-03-0"s,
                   u"2021-03-04T05:06:0\xD83D", u"\xFFFF\xFFFE", ustring(20, u'\xD800'), ustring(20, u'\0')});
}

// Asked about a character beyond a byte, the C library answers with what lies behind its tables, so that many
// letters count as blanks, and others end the program.
TEST(TimeTextRules, NoCharacterBeyondASCIICountsAsABlank) {
    for (const char* const locale : {"C", "C.UTF-8"}) {
        ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr) << locale;
        for (char32_t c = 0x80; c < 0x110000; c += c < 0x10000 ? 1 : 0x100) {
            ustring text;
            if (c >= 0x10000) text += static_cast<char16_t>(0xD7C0 + (c >> 10));
            text += static_cast<char16_t>(c < 0x10000 ? c : 0xDC00 + (c & 0x3FF));
            ASSERT_TRUE(convertStringToTime(text + u"2021").is_not_a_date_time()) << shown(text);
        }
    }
    std::setlocale(LC_ALL, "C");
}

TEST(TimeTextRules, AMebibyteOfTextIsNoTime) {
    constexpr std::size_t kMebibyte = 1U << 20U;
    const ustring time = u"2021-03-04T05:06:07Z";
    expectNoTimes({ustring(kMebibyte, u'2'), ustring(kMebibyte, u' '), ustring(kMebibyte, u'\uFF12'),
                   time + ustring(kMebibyte, u' '), time + ustring(kMebibyte, u'x'),
                   ustring(kMebibyte, u' ') + time});
}

TEST(TimeTextRules, ComparingWithItsTimesTextTellsTheExactFormFromAllOthers) {
    const auto isExact = [](const ustring& text) {
        return !text.empty() && convertTimeToString(convertStringToTime(text)) == text;
    };
    EXPECT_TRUE(isExact(u"2021-03-04T05:06:07Z"));
    for (const ustring& lenient :
         {u"2021-03-04T05:06:07"s, u"2021-03-04T05:06:07z"s, u"2021/03/04T05:06:07Z"s, u"2021-03-04"s,
          u"2021-03-04T23:59:60Z"s, u"2021- 3-04T05:06:07Z"s, u"+infinity"s,
          u"2021-03-04Tminimum-date-time"s}) {
        EXPECT_FALSE(convertStringToTime(lenient).is_not_a_date_time()) << shown(lenient);
        EXPECT_FALSE(isExact(lenient)) << shown(lenient);
    }
}

/// Writes numbers as 2,0,2,1.
class GroupingDigits : public std::numpunct<wchar_t> {
    wchar_t do_thousands_sep() const override { return L','; }
    std::string do_grouping() const override { return "\1"; }
};

// Runs by itself where the order counts: the first use decides about the locale.
TEST(TimeTextRules, TheLocaleOfTheProcessDoesNotGroupTheDigits) {
    const std::locale before = std::locale::global(std::locale(std::locale(), new GroupingDigits));
    EXPECT_EQ(convertTimeToString(timeOf("2021-03-04 05:06:07")), u"2021-03-04T05:06:07Z");
    EXPECT_EQ(convertStringToTime(u"2021-03-04T05:06:07Z"), timeOf("2021-03-04 05:06:07"));
    std::locale::global(before);
}

}  // namespace
