// Time conversions of many threads, while nobody changes the environment.

#include <pkgcore/core/TimeConversions.hpp>

#include "tests/support/ManyThreads.hpp"
#include "tests/support/ScopedEnvironment.hpp"

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <atomic>

using boost::posix_time::ptime;

// Where TZ is unset, the C library's tzset frees and allocates the name of the zone under a lock of its own,
// which the thread sanitizer does not see. It asks for this function; nobody else does.
extern "C" const char* __tsan_default_suppressions();  // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __tsan_default_suppressions() { return "called_from_lib:libc.so.6"; }  // NOLINT

namespace {

ptime hourNumber(int hour) {
    return ptime(boost::gregorian::date(2021, 1, 1)) + boost::posix_time::hours(hour);
}

TEST(ConcurrentTime, IsWrittenAndReadByManyThreadsFromTheFirstUseOn) {
    std::atomic<int> wrong{0};
    test::inManyThreads([&] {
        for (int hour = 0; hour < 500; ++hour) {
            const ptime time = hourNumber(hour);
            if (opc::convertStringToTime(opc::convertTimeToString(time)) != time) ++wrong;
            if (!opc::convertStringToTime(u"no time").is_not_a_date_time()) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(ConcurrentTime, IsShownByTheWallClockInManyThreads) {
    const test::ScopedEnvironment tz("TZ", "Europe/Berlin");
    const ptime summer(boost::gregorian::date(2021, 3, 28), boost::posix_time::hours(1));
    const ptime winter(boost::gregorian::date(2021, 10, 31), boost::posix_time::hours(1));
    std::atomic<int> wrong{0};
    test::inManyThreads([&] {
        for (int day = 0; day < 365; ++day) {
            const ptime utc = hourNumber(day * 24);
            const int ahead = utc >= summer && utc < winter ? 2 : 1;
            if (opc::convertToLocalTime(utc) != utc + boost::posix_time::hours(ahead)) ++wrong;
            if (opc::convertToUTCTime(opc::convertToLocalTime(utc)) != utc) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(ConcurrentTime, IsThatOfTheSystemsZoneInManyThreads) {
    const test::ScopedEnvironment tz("TZ", nullptr);
    std::atomic<int> wrong{0};
    test::inManyThreads([&] {
        for (int day = 0; day < 365; ++day) {
            const ptime local = opc::convertToLocalTime(hourNumber(day * 24));
            if (opc::convertToLocalTime(opc::convertToUTCTime(local)) != local) ++wrong;
            if (opc::getCurrentTime().is_special()) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}

}  // namespace
