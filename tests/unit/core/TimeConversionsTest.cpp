// Times as text, and the current time.

#include <pkgcore/core/TimeConversions.hpp>

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time.hpp>

using boost::posix_time::ptime;
using opc::convertTimeToString;
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

TEST(CurrentTime, IsNowInWholeSeconds) {
    const ptime before = boost::posix_time::second_clock::universal_time();
    const ptime now = opc::getCurrentTime();
    const ptime after = boost::posix_time::second_clock::universal_time();
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
    EXPECT_EQ(now.time_of_day().fractional_seconds(), 0);
}

}  // namespace
