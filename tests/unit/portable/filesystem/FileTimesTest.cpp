#include <pkgcore/portable/filesystem/FileTimes.hpp>

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <limits>
#include <string>

namespace {

using boost::posix_time::from_iso_extended_string;
using boost::posix_time::ptime;
using boost::posix_time::to_iso_extended_string;
using namespace fl::filesystem::posix;

struct Instant {
    timespec time;
    const char* text;
};

const Instant kInstants[] = {
    {{0, 0}, "1970-01-01T00:00:00"},
    {{0, 1'000}, "1970-01-01T00:00:00.000001"},
    {{-1, 999'999'000}, "1969-12-31T23:59:59.999999"},
    {{-1, 0}, "1969-12-31T23:59:59"},
    {{-2'147'483'648, 0}, "1901-12-13T20:45:52"},
    {{2'147'483'647, 999'999'000}, "2038-01-19T03:14:07.999999"},
    {{2'147'483'648, 0}, "2038-01-19T03:14:08"},
    {{15'032'385'535, 0}, "2446-05-10T22:38:55"},
    {{951'782'400, 0}, "2000-02-29T00:00:00"},
    {{-17'987'443'200, 0}, "1400-01-01T00:00:00"},
    {{253'402'300'799, 999'999'000}, "9999-12-31T23:59:59.999999"},
};

TEST(FileTimes, SameInstantBothWays) {
    for (const Instant& instant : kInstants) {
        EXPECT_EQ(instant.text, to_iso_extended_string(toPtime(instant.time)));
        const timespec back = toTimespec(from_iso_extended_string(instant.text));
        EXPECT_EQ(instant.time.tv_sec, back.tv_sec) << instant.text;
        EXPECT_EQ(instant.time.tv_nsec, back.tv_nsec) << instant.text;
    }
}

TEST(FileTimes, NanosecondsAreRoundedDownOnBothSidesOfTheEpoch) {
    EXPECT_EQ("1970-01-01T00:00:00.000001", to_iso_extended_string(toPtime({0, 1'999})));
    EXPECT_EQ("1970-01-01T00:00:00", to_iso_extended_string(toPtime({0, 999})));
    EXPECT_EQ("1969-12-31T23:59:59.999999", to_iso_extended_string(toPtime({-1, 999'999'999})));
    EXPECT_EQ("1969-12-31T23:59:59", to_iso_extended_string(toPtime({-1, 999})));
}

TEST(FileTimes, TimeThatPtimeCannotTellIsTheInfinityOnItsSide) {
    using Seconds = std::numeric_limits<time_t>;
    EXPECT_TRUE(toPtime({-17'987'443'201, 999'999'999}).is_neg_infinity());
    EXPECT_TRUE(toPtime({Seconds::min(), 0}).is_neg_infinity());
    EXPECT_TRUE(toPtime({253'402'300'800, 0}).is_pos_infinity());
    EXPECT_TRUE(toPtime({Seconds::max(), 999'999'999}).is_pos_infinity());
}

}  // namespace
