// Wall-clock times beside a reader of the system's zone files that knows nothing of the C library.

#include <pkgcore/platform/i18n/TimeZone.hpp>

#include "tests/reference/ZoneFile.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/ScopedEnvironment.hpp"
#include "tests/support/SmallDisk.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <array>
#include <cctype>
#include <filesystem>
#include <random>
#include <string>
#include <utility>
#include <vector>

using boost::posix_time::ptime;
using reference::Change;
using reference::PosixZoneRule;
using reference::Seconds;
using reference::WallClock;
using reference::ZoneFile;
using Zone = fl::i18n::time_zone::timezone;  // the C library has a variable of that name

namespace {

constexpr int kLastYear = 2500;
const std::string kZoneFolder = "/usr/share/zoneinfo/";
const std::string kSystemsZone = "/etc/localtime";

ptime timeAt(Seconds time) {
    static const ptime epoch(boost::gregorian::date(1970, 1, 1));
    return epoch + boost::posix_time::seconds(time);
}

ptime localOf(Seconds utc) { return fl::i18n::time_zone::from_utc(timeAt(utc), Zone(std::string())); }
ptime utcOf(Seconds local) { return fl::i18n::time_zone::to_utc(timeAt(local), Zone(std::string())); }

WallClock wallClockOf(const std::string& zone) {
    return ZoneFile(kZoneFolder + zone).wallClockUntil(kLastYear);
}

/// One second before, at, and one second after a change, in both directions.
void expectAround(const Change& change, const WallClock& expected) {
    for (const Seconds utc : {change.at - 1, change.at, change.at + 1}) {
        ASSERT_EQ(localOf(utc), timeAt(expected.localOf(utc))) << timeAt(utc) << " UTC";
        const Seconds between = (change.before + change.after) / 2;  // shown twice, or never
        for (const Seconds offset : {change.before, between, change.after}) {
            const Seconds local = utc + offset;
            ASSERT_EQ(utcOf(local), timeAt(expected.utcOf(local))) << timeAt(local) << " local";
        }
    }
}

/// Up to kLastYear.
void expectAroundAll(const WallClock& expected) {
    for (const Change& change : expected.changes()) {
        ASSERT_NO_FATAL_FAILURE(expectAround(change, expected));
    }
}

void expectAt(Seconds time, const WallClock& expected) {
    ASSERT_EQ(localOf(time), timeAt(expected.localOf(time))) << timeAt(time) << " UTC";
    ASSERT_EQ(utcOf(time), timeAt(expected.utcOf(time))) << timeAt(time) << " local";
}

Seconds anyTime(std::mt19937_64& random, int firstYear = 1401) {
    return std::uniform_int_distribution<Seconds>(reference::secondsAt(firstYear, 1, 1),
                                                  reference::secondsAt(kLastYear, 12, 31))(random);
}

constexpr std::array kZones = {
    "Africa/Casablanca",    // winter time is the daylight time, and Ramadan moves through the year
    "Africa/Freetown",      // four days between two changes in 1939
    "Africa/Monrovia",      // 44 minutes and 30 seconds until 1972
    "America/Caracas",      // half an hour back and forth
    "America/New_York",     // the rule changed in 2007
    "America/Nuuk",         // a rule at one hour before the day
    "America/Sao_Paulo",    // changed at midnight
    "America/St_Johns",     // half hours, changed at one minute past midnight, once by two hours
    "Antarctica/Troll",     // two hours of daylight time
    "Asia/Gaza",            // listed until 2086
    "Asia/Kathmandu",       // 45 minutes
    "Asia/Kolkata",         // half an hour
    "Asia/Manila",          // left out a day in 1844
    "Asia/Pyongyang",       // half an hour back and forth
    "Asia/Tehran",          // daylight time until 2022
    "Australia/Lord_Howe",  // half an hour of daylight time
    "Europe/Berlin",        // double daylight time in 1945
    "Europe/Dublin",        // winter time is the daylight time
    "Europe/Lisbon",        // changed its standard time forth and back
    "Europe/Moscow",        // changed its standard time in summer and in winter
    "Pacific/Apia",         // left out 30 December 2011
    "Pacific/Chatham",      // 45 minutes, in the south
    "Pacific/Kiritimati",   // left out a day, at the end of 1994
    "Etc/GMT+12",          "Etc/GMT-14", "UTC",
};

class TimeZoneFiles : public testing::TestWithParam<const char*> {};

TEST_P(TimeZoneFiles, AgreeAroundEveryChange) {
    const test::ScopedEnvironment tz("TZ", GetParam());
    expectAroundAll(wallClockOf(GetParam()));
}

TEST_P(TimeZoneFiles, AgreeAtRandomTimes) {
    const test::ScopedEnvironment tz("TZ", GetParam());
    const WallClock expected = wallClockOf(GetParam());
    std::mt19937_64 random(3);
    for (int i = 0; i < 2'000; ++i) ASSERT_NO_FATAL_FAILURE(expectAt(anyTime(random), expected));
}

std::string nameOfZone(const testing::TestParamInfo<const char*>& info) {
    std::string name;
    for (const char c : std::string(info.param)) {
        if (c == '+') name += "Plus";
        if (c == '-') name += "Minus";
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) name += c;
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(, TimeZoneFiles, testing::ValuesIn(kZones), nameOfZone);

TEST(TimeZone, IsLookedUpAtEachCall) {
    std::vector<WallClock> expected;
    for (const char* const zone : kZones) expected.push_back(wallClockOf(zone));
    std::mt19937_64 random(5);
    for (int i = 0; i < 5'000; ++i) {
        const std::size_t which = random() % kZones.size();
        const test::ScopedEnvironment tz("TZ", kZones[which]);
        ASSERT_NO_FATAL_FAILURE(expectAt(anyTime(random), expected[which])) << kZones[which];
    }
}

WallClock wallClockByRule(const PosixZoneRule& rule, int firstYear) {
    std::vector<Change> changes =
        changesAfter(reference::secondsAt(firstYear, 1, 1), rule, firstYear, kLastYear);
    const Seconds firstOffset = changes.empty() ? rule.standard() : changes.front().before;
    return WallClock(firstOffset, std::move(changes));
}

// The C library has a rule begin in 1970; its form cannot say since when it holds.
TEST(TimeZone, OfARuleIsThatOfPOSIXFrom1971On) {
    constexpr int kFirstYear = 1971;
    for (const char* const text :
         {"CET-1CEST,M3.5.0,M10.5.0/3", "EST5EDT,M3.2.0,M11.1.0", "NZST-12NZDT,M9.5.0,M4.1.0/3",
          "IST-1GMT0,M10.5.0,M3.5.0/1", "<-02>2<-01>,M3.5.0/-1,M10.5.0/0",
          "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", "AAA3BBB,J60/1:30,J300/2:15:30", "AAA3BBB,59/0,299",
          "AAA3BBB1,M2.4.3/49,M11.3.6/-25", "XXX-5:45", "XXX24", "XXX-24", "XXX-24:59:59", "XXX24:59:59",
          "XXX-24YYY,M3.5.0,M10.5.0"}) {
        const test::ScopedEnvironment tz("TZ", text);
        const WallClock expected = wallClockByRule(PosixZoneRule(text), kFirstYear);
        ASSERT_NO_FATAL_FAILURE(expectAroundAll(expected)) << text;
        std::mt19937_64 random(6);
        for (int i = 0; i < 500; ++i) {
            ASSERT_NO_FATAL_FAILURE(expectAt(anyTime(random, kFirstYear), expected)) << text;
        }
    }
}

TEST(TimeZone, OfARuleWithLessThanADayOfDaylightTimeShowsEachInstantAsItsTime) {
    const char* const text = "AAA0BBB,M3.2.0/0,M3.2.0/20";
    const test::ScopedEnvironment tz("TZ", text);
    const WallClock expected = wallClockByRule(PosixZoneRule(text), 2020);
    for (const Change& change : expected.changes()) {
        for (Seconds local = change.at - 2 * reference::kDay; local < change.at + 2 * reference::kDay;
             local += 900) {
            const Seconds utc = expected.utcOf(local);
            if (expected.localOf(utc) != local) continue;  // skipped
            const ptime found = utcOf(local);
            ASSERT_EQ(fl::i18n::time_zone::from_utc(found, Zone(std::string())), timeAt(local)) << found;
        }
    }
}

WallClock systemsWallClock() {
    if (!std::filesystem::exists(kSystemsZone)) return WallClock(0, {});  // then it is UTC
    return ZoneFile(kSystemsZone).wallClockUntil(kLastYear);
}

void expectTheSystemsZone() {
    const test::ScopedEnvironment tz("TZ", nullptr);
    const WallClock expected = systemsWallClock();
    expectAroundAll(expected);
    std::mt19937_64 random(9);
    for (int i = 0; i < 1'000; ++i) ASSERT_NO_FATAL_FAILURE(expectAt(anyTime(random), expected));
}

TEST(TimeZone, IsTheSystemsWhereTZIsUnset) { expectTheSystemsZone(); }

TEST(TimeZone, FollowsTheSystemsZoneWhileTheProcessRuns) {
    if (!test::canMountSmallDisk() || !std::filesystem::exists(kSystemsZone)) {
        GTEST_SKIP() << "needs to mount, and " << kSystemsZone;
    }
    const test::TempTree place;
    test::runInChild([&] {
        ASSERT_TRUE(
            test::mountSmallDisk(place.path(), "64k"));  // for the mounts of its own that come with it
        for (const char* const zone : {"Europe/Berlin", "Asia/Kathmandu", "Australia/Lord_Howe"}) {
            const std::string file = kZoneFolder + zone;
            ASSERT_EQ(::mount(file.c_str(), kSystemsZone.c_str(), nullptr, MS_BIND, nullptr), 0);
            ASSERT_NO_FATAL_FAILURE(expectTheSystemsZone()) << zone;
        }
    });
}

}  // namespace
