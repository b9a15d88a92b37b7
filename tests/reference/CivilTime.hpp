#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

/// The proleptic Gregorian calendar by its leap-year rule, for comparison.
namespace reference {

using Seconds = std::int64_t;  // since 1970-01-01T00:00:00, of UTC or of a wall clock

inline constexpr Seconds kDay = 86'400;

constexpr bool isLeap(std::int64_t year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

constexpr int daysInMonth(std::int64_t year, int month) {
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeap(year) ? 29 : kDays[month - 1];
}

/// Days from 1 January 1970 to 1 January of a year from 1 on.
constexpr std::int64_t daysToYear(std::int64_t year) {
    const std::int64_t before = year - 1;
    return before * 365 + before / 4 - before / 100 + before / 400 - 719'162;
}

constexpr std::int64_t daysToDate(std::int64_t year, int month, int day) {
    std::int64_t days = daysToYear(year) + day - 1;
    for (int earlier = 1; earlier < month; ++earlier) days += daysInMonth(year, earlier);
    return days;
}

constexpr Seconds secondsAt(std::int64_t year, int month, int day, int hour = 0, int minute = 0,
                            int second = 0) {
    return daysToDate(year, month, day) * kDay + hour * 3600 + minute * 60 + second;
}

/// Rounds down.
constexpr std::int64_t dayOf(Seconds time) { return time / kDay - (time % kDay < 0 ? 1 : 0); }

constexpr std::int64_t yearOf(Seconds time) {
    std::int64_t year = 1970 + dayOf(time) / 366 - 1;
    while (daysToYear(year + 1) <= dayOf(time)) ++year;
    while (daysToYear(year) > dayOf(time)) --year;
    return year;
}

/// In the form 2021-03-04T05:06:07Z.
inline std::string textOf(Seconds time) {
    const std::int64_t year = yearOf(time);
    int day = static_cast<int>(dayOf(time) - daysToYear(year)) + 1;
    int month = 1;
    for (; day > daysInMonth(year, month); ++month) day -= daysInMonth(year, month);
    const int second = static_cast<int>(time - dayOf(time) * kDay);
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", static_cast<int>(year), month, day,
                  second / 3600, second / 60 % 60, second % 60);
    return text;
}

}  // namespace reference
