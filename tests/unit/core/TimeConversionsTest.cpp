// Times as text, and texts as times.

#include <pkgcore/core/TimeConversions.hpp>

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <cstdint>
#include <random>

using boost::posix_time::ptime;
using opc::convertStringToTime;
using opc::convertTimeToString;
using opc::ustring;

namespace {

ptime at(const char* text) { return boost::posix_time::time_from_string(text); }

struct Row {
    const char16_t* text;
    const char* time;  // null: no time
};

TEST(TimeText, DropsFractionsOfASecond) {
    EXPECT_EQ(convertTimeToString(at("2021-03-04 05:06:07.250")), u"2021-03-04T05:06:07Z");
    EXPECT_EQ(convertTimeToString(at("2021-03-04 12:00:00.999999")), u"2021-03-04T12:00:00Z");
    EXPECT_EQ(convertTimeToString(at("1969-12-31 23:59:59.999999")), u"1969-12-31T23:59:59Z");
}

TEST(TimeText, OfASpecialTimeIsEmpty) {
    for (const auto special :
         {boost::posix_time::not_a_date_time, boost::posix_time::pos_infin, boost::posix_time::neg_infin}) {
        EXPECT_EQ(convertTimeToString(ptime(special)), ustring());
    }
}

TEST(TimeText, ReachesFromTheFirstYearToTheLast) {
    EXPECT_EQ(convertTimeToString(at("1400-01-01 00:00:00")), u"1400-01-01T00:00:00Z");
    EXPECT_EQ(convertTimeToString(at("9999-12-31 23:59:59")), u"9999-12-31T23:59:59Z");
}

TEST(TimeText, IsReadOnlyWhereItIsExactlyOneTime) {
    constexpr Row rows[] = {
        {u"2021-03-04T05:06:07Z", "2021-03-04 05:06:07"},
        {u"1400-01-01T00:00:00Z", "1400-01-01 00:00:00"},
        {u"9999-12-31T23:59:59Z", "9999-12-31 23:59:59"},
        {u"2000-02-29T00:00:00Z", "2000-02-29 00:00:00"},
        {u"", nullptr},
        {u" ", nullptr},
        {u"x", nullptr},
        {u"2021", "2021-01-01 00:00:00"},  // up to a date the parser has the only say
        {u"2021-03-04T05:06:07Z ", nullptr},
        {u"2021-03-04T05:06:07Zx", nullptr},
        {u"2021-03-04T05:06:07ZZ", nullptr},
        {u"2021-03-04T05:06:07Z\n", nullptr},
        {u"2021-03-04 05:06:07Z", nullptr},
        {u"2021-03-04t05:06:07Z", nullptr},
        {u"2021-03-04_05:06:07Z", nullptr},
        {u"2021-03-04T05:06", nullptr},
        {u"2021-03-04T05:06Z", nullptr},
        {u"2021-03-04T5:6:7Z", nullptr},
        {u"2021-13-04T05:06:07Z", nullptr},
        {u"2021-00-04T05:06:07Z", nullptr},
        {u"2021-02-30T05:06:07Z", nullptr},
        {u"1900-02-29T05:06:07Z", nullptr},
        {u"2021-03-00T05:06:07Z", nullptr},
        {u"2021-03-32T05:06:07Z", nullptr},
        {u"1399-12-31T23:59:59Z", nullptr},
        {u"0000-01-01T00:00:00Z", nullptr},
        {u"-2021-03-04T05:06:07Z", nullptr},
        {u"20a1-03-04T05:06:07Z", nullptr},
        {u"2021-03-04Txx:06:07Z", nullptr},
        {u"\u0662\u0660\u0662\u0661-03-04T05:06:07Z", nullptr},
        {u"not-a-date-time", nullptr},
        {u"T", nullptr},
    };
    for (const Row& row : rows) {
        const ptime expected = row.time != nullptr ? at(row.time) : ptime(boost::posix_time::not_a_date_time);
        EXPECT_EQ(convertStringToTime(row.text), expected) << testing::PrintToString(ustring(row.text));
    }
}

TEST(TimeText, OfRandomInstantsComesBackUnchanged) {
    std::mt19937_64 random(7);
    const ptime first = at("1400-01-01 00:00:00");
    const std::int64_t span = (at("9999-12-31 23:59:59") - first).total_seconds();
    for (int i = 0; i < 10'000; ++i) {
        const ptime time = first + boost::posix_time::seconds(static_cast<std::int64_t>(
                                       random() % static_cast<std::uint64_t>(span)));
        ASSERT_EQ(convertStringToTime(convertTimeToString(time)), time) << time;
    }
}

TEST(CurrentTime, IsNowInWholeSeconds) {
    const ptime before = boost::posix_time::second_clock::universal_time();
    const ptime now = opc::getCurrentTime();
    const ptime after = boost::posix_time::second_clock::universal_time();
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
    EXPECT_EQ(now.time_of_day().fractional_seconds(), 0);
}

}  // namespace
