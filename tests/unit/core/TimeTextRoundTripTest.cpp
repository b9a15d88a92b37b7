// Times to text and back, beside a formatter of its own.

#include <pkgcore/core/TimeConversions.hpp>

#include "tests/reference/CivilTime.hpp"

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <random>
#include <string>

using boost::posix_time::ptime;
using opc::convertStringToTime;
using opc::convertTimeToString;
using opc::ustring;
using reference::Seconds;
using reference::secondsAt;

namespace {

constexpr Seconds kFirst = secondsAt(1400, 1, 1);
constexpr Seconds kLast = secondsAt(9999, 12, 31, 23, 59, 59);

ptime timeAt(Seconds time) {
    static const ptime epoch(boost::gregorian::date(1970, 1, 1));
    return epoch + boost::posix_time::seconds(time);
}

ustring textAt(Seconds time) {
    const std::string text = reference::textOf(time);
    return ustring(text.begin(), text.end());
}

void expectThereAndBack(Seconds time) {
    const ustring text = textAt(time);
    ASSERT_EQ(convertTimeToString(timeAt(time)), text);
    ASSERT_EQ(convertStringToTime(text), timeAt(time)) << reference::textOf(time);
}

TEST(TimeTextRoundTrip, HoldsForEverySecondOfSomeDays) {
    constexpr Seconds kDays[] = {kFirst, secondsAt(2020, 2, 29), secondsAt(2021, 12, 31),
                                 secondsAt(9999, 12, 31)};
    for (const Seconds day : kDays) {
        for (Seconds time = day; time < day + reference::kDay; ++time) {
            ASSERT_NO_FATAL_FAILURE(expectThereAndBack(time));
        }
    }
}

TEST(TimeTextRoundTrip, HoldsForTheFirstAndTheLastSecondOfEveryMonth) {
    for (int year = 1400; year <= 9999; ++year) {
        for (int month = 1; month <= 12; ++month) {
            ASSERT_NO_FATAL_FAILURE(expectThereAndBack(secondsAt(year, month, 1)));
            const int last = reference::daysInMonth(year, month);
            ASSERT_NO_FATAL_FAILURE(expectThereAndBack(secondsAt(year, month, last, 23, 59, 59)));
        }
    }
}

TEST(TimeTextRoundTrip, HoldsForRandomInstants) {
    std::mt19937_64 random(7);
    std::uniform_int_distribution<Seconds> any(kFirst, kLast);
    for (int i = 0; i < 100'000; ++i) ASSERT_NO_FATAL_FAILURE(expectThereAndBack(any(random)));
}

TEST(TimeTextRoundTrip, DropsFractionsBeforeAndAfter1970Alike) {
    std::mt19937_64 random(8);
    std::uniform_int_distribution<Seconds> any(kFirst, kLast);
    std::uniform_int_distribution<int> fraction(0, 999'999);
    for (int i = 0; i < 20'000; ++i) {
        const Seconds time = any(random);
        const ptime later = timeAt(time) + boost::posix_time::microseconds(fraction(random));
        ASSERT_EQ(convertTimeToString(later), textAt(time)) << later;
    }
    for (const Seconds time : {kFirst, Seconds{-1}, Seconds{0}, kLast}) {
        const ptime nearlyNext = timeAt(time) + boost::posix_time::microseconds(999'999);
        EXPECT_EQ(convertTimeToString(nearlyNext), textAt(time)) << nearlyNext;
    }
}

}  // namespace
