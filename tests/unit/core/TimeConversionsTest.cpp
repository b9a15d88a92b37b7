// Times as text, local times, and the current time.

#include <pkgcore/core/TimeConversions.hpp>

#include "tests/support/ScopedEnvironment.hpp"

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <stdexcept>

using boost::posix_time::hours;
using boost::posix_time::minutes;
using boost::posix_time::ptime;
using opc::convertTimeToString;
using opc::convertToLocalTime;
using opc::convertToUTCTime;
using opc::ustring;

namespace {

ptime at(const char* text) { return boost::posix_time::time_from_string(text); }

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

TEST(LocalTime, IsThatOfTheZoneThatTZNamesAtEachCall) {
    const ptime noon = at("2021-07-01 12:00:00.250");
    const ptime evening = at("2021-07-01 14:00:00.250");
    const test::ScopedEnvironment berlin("TZ", "Europe/Berlin");
    EXPECT_EQ(convertToLocalTime(noon), evening);
    EXPECT_EQ(convertToUTCTime(evening), noon);
    const test::ScopedEnvironment kathmandu("TZ", "Asia/Kathmandu");
    EXPECT_EQ(convertToLocalTime(noon), at("2021-07-01 17:45:00.250"));
    const test::ScopedEnvironment nowhere("TZ", "No/Such_Zone");
    EXPECT_EQ(convertToLocalTime(noon), noon);
}

TEST(LocalTime, ComesBackUnchangedOutsideTheRepeatedHour) {
    const test::ScopedEnvironment berlin("TZ", "Europe/Berlin");
    const ptime again = at("2021-10-31 01:00:00");  // the hour from here on is shown a second time
    for (ptime time = at("2021-01-01 00:00:00"); time.date().year() == 2021; time += minutes(10)) {
        const bool repeated = time >= again && time < again + hours(1);
        const ptime expected = repeated ? time - hours(1) : time;
        ASSERT_EQ(convertToUTCTime(convertToLocalTime(time)), expected) << time;
    }
}

TEST(LocalTime, OutsideTheYearsOfBoostIsOutOfRange) {
    const test::ScopedEnvironment tokyo("TZ", "Asia/Tokyo");
    EXPECT_THROW(convertToLocalTime(at("9999-12-31 23:59:59")), std::out_of_range);
    EXPECT_THROW(convertToUTCTime(at("1400-01-01 00:00:00")), std::out_of_range);
    EXPECT_THROW(convertTimeToString(at("9999-12-31 23:59:59") + hours(1)), std::out_of_range);
}

TEST(CurrentTime, IsNowInWholeSecondsOfUTC) {
    const test::ScopedEnvironment kiritimati("TZ", "Pacific/Kiritimati");  // 14 hours ahead
    const ptime before = boost::posix_time::second_clock::universal_time();
    const ptime now = opc::getCurrentTime();
    const ptime after = boost::posix_time::second_clock::universal_time();
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
    EXPECT_EQ(now.time_of_day().fractional_seconds(), 0);
}

}  // namespace
