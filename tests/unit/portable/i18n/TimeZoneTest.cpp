// Wall-clock times of well-known places, with TZ changed from case to case.

#include <pkgcore/platform/i18n/TimeZone.hpp>

#include "tests/support/ScopedEnvironment.hpp"

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <cstdint>
#include <random>
#include <stdexcept>

using boost::posix_time::ptime;
using fl::i18n::time_zone::from_utc;
using Zone = fl::i18n::time_zone::timezone;  // the C library has a variable of that name
using fl::i18n::time_zone::to_utc;

namespace {

ptime at(const char* text) { return boost::posix_time::time_from_string(text); }

struct Row {
    const char* zone;
    const char* utc;
    const char* local;
};

// Each instant is the first that its wall clock shows, so both directions hold.
constexpr Row kRows[] = {
    {"UTC", "2021-07-01 12:00:00", "2021-07-01 12:00:00"},
    {"Europe/Berlin", "2021-01-01 12:00:00", "2021-01-01 13:00:00"},
    {"Europe/Berlin", "2021-07-01 12:00:00", "2021-07-01 14:00:00"},
    {"Europe/Berlin", "2021-03-28 00:59:59", "2021-03-28 01:59:59"},  // before the gap
    {"Europe/Berlin", "2021-03-28 01:00:00", "2021-03-28 03:00:00"},  // after it
    {"Europe/Berlin", "2021-10-31 00:00:00", "2021-10-31 02:00:00"},  // the first of two
    {"Europe/Berlin", "2021-10-31 00:59:59", "2021-10-31 02:59:59"},
    {"Europe/Berlin", "2021-10-31 02:00:00", "2021-10-31 03:00:00"},
    {"Europe/Berlin", "2500-07-01 12:00:00", "2500-07-01 14:00:00"},  // by the rule
    {"Europe/Berlin", "1850-01-01 12:00:00", "1850-01-01 12:53:28"},  // by the sun
    {"America/New_York", "2007-03-11 06:59:59", "2007-03-11 01:59:59"},
    {"America/New_York", "2007-03-11 07:00:00", "2007-03-11 03:00:00"},
    {"Asia/Kathmandu", "2021-07-01 12:00:00", "2021-07-01 17:45:00"},
    {"Australia/Lord_Howe", "2021-07-01 12:00:00", "2021-07-01 22:30:00"},
    {"Australia/Lord_Howe", "2021-01-01 12:00:00", "2021-01-01 23:00:00"},  // half an hour of daylight time
    {"Pacific/Apia", "2011-12-30 09:59:59", "2011-12-29 23:59:59"},         // and then a day was left out
    {"Pacific/Apia", "2011-12-30 10:00:00", "2011-12-31 00:00:00"},
    {"Pacific/Kiritimati", "2021-07-01 12:00:00", "2021-07-02 02:00:00"},
    {"CET-1CEST,M3.5.0,M10.5.0/3", "2021-07-01 12:00:00", "2021-07-01 14:00:00"},
    {"XXX-24", "2021-07-01 12:00:00", "2021-07-02 12:00:00"},
    {"XXX24", "2021-07-01 12:00:00", "2021-06-30 12:00:00"},
};

ptime local(const char* zone, const ptime& utc) {
    const test::ScopedEnvironment tz("TZ", zone);
    return from_utc(utc, Zone(std::string()));
}

ptime utc(const char* zone, const ptime& local) {
    const test::ScopedEnvironment tz("TZ", zone);
    return to_utc(local, Zone(std::string()));
}

TEST(TimeZone, ShowsAnInstantAsTheWallClockOfThePlace) {
    for (const Row& row : kRows) {
        EXPECT_EQ(local(row.zone, at(row.utc)), at(row.local)) << row.zone << ' ' << row.utc;
    }
}

TEST(TimeZone, FindsTheInstantOfAWallClockTime) {
    for (const Row& row : kRows) {
        EXPECT_EQ(utc(row.zone, at(row.local)), at(row.utc)) << row.zone << ' ' << row.local;
    }
}

TEST(TimeZone, ReadsASkippedTimeWithTheOffsetBeforeTheChange) {
    EXPECT_EQ(utc("Europe/Berlin", at("2021-03-28 02:30:00")), at("2021-03-28 01:30:00"));
    EXPECT_EQ(utc("America/New_York", at("2007-03-11 02:00:00")), at("2007-03-11 07:00:00"));
    EXPECT_EQ(utc("Pacific/Apia", at("2011-12-30 12:00:00")), at("2011-12-30 22:00:00"));
}

TEST(TimeZone, KeepsFractionsOfASecondAlsoBefore1970) {
    EXPECT_EQ(local("Europe/Berlin", at("1960-01-01 00:00:00.250000")), at("1960-01-01 01:00:00.250000"));
    EXPECT_EQ(utc("Europe/Berlin", at("1960-01-01 01:00:00.250000")), at("1960-01-01 00:00:00.250000"));
}

TEST(TimeZone, LeavesSpecialTimesAsTheyAre) {
    for (const auto special : {boost::posix_time::pos_infin, boost::posix_time::neg_infin}) {
        EXPECT_EQ(local("Europe/Berlin", ptime(special)), ptime(special));
        EXPECT_EQ(utc("Europe/Berlin", ptime(special)), ptime(special));
    }
    EXPECT_TRUE(local("UTC", ptime(boost::posix_time::not_a_date_time)).is_not_a_date_time());
    EXPECT_TRUE(utc("UTC", ptime(boost::posix_time::not_a_date_time)).is_not_a_date_time());
}

TEST(TimeZone, HasItsNameWithAColonOrAsAPathAsWell) {
    for (const char* const berlin : {"Europe/Berlin", ":Europe/Berlin", "/usr/share/zoneinfo/Europe/Berlin",
                                     ":/usr/share/zoneinfo/Europe/Berlin", ":CET-1CEST,M3.5.0,M10.5.0/3"}) {
        EXPECT_EQ(local(berlin, at("2021-07-01 12:00:00")), at("2021-07-01 14:00:00")) << berlin;
        EXPECT_EQ(utc(berlin, at("2021-07-01 14:00:00")), at("2021-07-01 12:00:00")) << berlin;
    }
}

TEST(TimeZone, ThatTheSystemDoesNotKnowCountsAsUTC) {
    const std::string mebibyte(1U << 20U, 'x');
    for (const char* const unknown :
         {"", ":", " ", "/", "x", "5", "No/Such_Zone", "Nowhere/City", ":No/Such_Zone", "Europe/Berlim",
          "Europe/Berlin ", "europe/berlin/", "Europe", "/usr/share/zoneinfo", "/no/such/file", "/etc/passwd",
          "Z\xC3\xBCrich", mebibyte.c_str()}) {
        const std::string name = std::string(unknown).substr(0, 40);
        EXPECT_EQ(local(unknown, at("2021-07-01 12:00:00")), at("2021-07-01 12:00:00")) << name;
        EXPECT_EQ(utc(unknown, at("2021-07-01 12:00:00")), at("2021-07-01 12:00:00")) << name;
    }
}

TEST(TimeZone, KeepsToTheYearsOfBoost) {
    const ptime first = at("1400-01-01 00:00:00");
    const ptime last(boost::date_time::max_date_time);
    EXPECT_EQ(local("XXX-1", at("9999-12-31 22:59:59.999999")), last);
    EXPECT_EQ(utc("XXX1", at("9999-12-31 22:59:59.999999")), last);
    EXPECT_EQ(local("XXX1", at("1400-01-01 01:00:00")), first);
    EXPECT_EQ(utc("XXX-1", at("1400-01-01 01:00:00")), first);
    EXPECT_THROW(local("XXX-1", at("9999-12-31 23:00:00")), std::out_of_range);
    EXPECT_THROW(utc("XXX1", at("9999-12-31 23:00:00")), std::out_of_range);
    EXPECT_THROW(local("XXX1", at("1400-01-01 00:59:59.999999")), std::out_of_range);
    EXPECT_THROW(utc("XXX-1", at("1400-01-01 00:59:59.999999")), std::out_of_range);
}

TEST(TimeZone, OfAnyOtherNameIsRefused) { EXPECT_THROW(Zone("Europe/Berlin"), std::invalid_argument); }

TEST(TimeZone, BringsInstantsThereAndBackButForTheRepeatedHour) {
    std::mt19937_64 random(11);
    const ptime first = at("1401-01-01 00:00:00");
    const auto span = static_cast<std::uint64_t>((at("9998-12-31 00:00:00") - first).total_seconds());
    for (const char* const zone :
         {"Europe/Berlin", "Asia/Kathmandu", "America/St_Johns", "Pacific/Chatham"}) {
        const test::ScopedEnvironment tz("TZ", zone);
        const Zone here{std::string()};
        for (int i = 0; i < 2'000; ++i) {
            const ptime instant =
                first + boost::posix_time::seconds(static_cast<std::int64_t>(random() % span));
            const ptime shown = from_utc(instant, here);
            const ptime back = to_utc(shown, here);
            // In a repeated hour the earlier instant comes back, and it is shown alike.
            ASSERT_LE(back, instant) << zone;
            ASSERT_EQ(from_utc(back, here), shown) << zone;
        }
    }
}

}  // namespace
