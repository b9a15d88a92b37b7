#pragma once

#include "tests/reference/CivilTime.hpp"
#include "tests/reference/WallClock.hpp"

#include <cctype>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace reference {

/// The value of TZ by the letter of POSIX (Base Definitions, 8.3), with the hours from -167 to 167 of RFC
/// 8536: "CET-1CEST,M3.5.0,M10.5.0/3". Daylight time needs its rules.
class PosixZoneRule {
public:
    explicit PosixZoneRule(std::string text) : text_(std::move(text)) {
        skipName();
        standard_ = -takeTime();  // POSIX counts west of Greenwich
        if (atEnd()) return;
        skipName();
        daylight_ = at(',') ? standard_ + 3600 : -takeTime();
        begin_ = takeDate();
        end_ = takeDate();
        if (!atEnd()) throw std::invalid_argument("text behind the rule: " + text_);
    }

    Seconds standard() const noexcept { return standard_; }

    /// In order of time.
    std::vector<Change> changesOf(std::int64_t year) const {
        if (!begin_) return {};
        const Change begin{begin_->momentIn(year) - standard_, standard_, daylight_};
        const Change end{end_->momentIn(year) - daylight_, daylight_, standard_};
        if (begin.at < end.at) return {begin, end};
        return {end, begin};
    }

private:
    /// A day of every year, and a time of it.
    struct Date {
        char form =
            'M';  // 'M': day `day` of week `week` of `month`; 'J': 29 February is not counted; '0': it is
        int month = 0;
        int week = 0;
        int day = 0;
        Seconds time = 2 * 3600;

        Seconds momentIn(std::int64_t year) const { return dayIn(year) * kDay + time; }

        std::int64_t dayIn(std::int64_t year) const {
            if (form == '0') return daysToYear(year) + day;
            if (form == 'J') return daysToYear(year) + day - 1 + (isLeap(year) && day >= 60 ? 1 : 0);
            const std::int64_t first = daysToDate(year, month, 1);
            const std::int64_t weekday = ((first + 4) % 7 + 7) % 7;  // 1 January 1970 was a Thursday
            std::int64_t found = first + (day - weekday + 7) % 7;
            for (int i = 1; i < week && found + 7 < first + daysInMonth(year, month); ++i) found += 7;
            return found;
        }
    };

    bool atEnd() const noexcept { return next_ == text_.size(); }
    bool at(char c) const noexcept { return !atEnd() && text_[next_] == c; }
    bool atDigit() const noexcept { return !atEnd() && text_[next_] >= '0' && text_[next_] <= '9'; }
    bool take(char c) { return at(c) && ++next_ != 0; }

    void require(char c) {
        if (!take(c)) throw std::invalid_argument(std::string("no ") + c + " in " + text_);
    }

    void skipName() {
        if (take('<')) {
            while (!take('>')) ++next_;
            return;
        }
        while (!atEnd() && std::isalpha(static_cast<unsigned char>(text_[next_])) != 0) ++next_;
    }

    int takeNumber() {
        if (!atDigit()) throw std::invalid_argument("no number in " + text_);
        int number = 0;
        for (; atDigit(); ++next_) number = number * 10 + (text_[next_] - '0');
        return number;
    }

    Seconds takeTime() {
        const Seconds sign = take('-') ? -1 : 1;
        if (sign == 1) take('+');
        Seconds time = takeNumber() * 3600;
        if (take(':')) time += takeNumber() * 60;
        if (take(':')) time += takeNumber();
        return sign * time;
    }

    Date takeDate() {
        require(',');
        Date date;
        date.form = take('M') ? 'M' : take('J') ? 'J' : '0';
        if (date.form == 'M') takeMonthAndWeek(date);
        date.day = takeNumber();
        if (take('/')) date.time = takeTime();
        return date;
    }

    void takeMonthAndWeek(Date& date) {
        date.month = takeNumber();
        require('.');
        date.week = takeNumber();
        require('.');
    }

    std::string text_;
    std::size_t next_ = 0;
    Seconds standard_ = 0;
    Seconds daylight_ = 0;
    std::optional<Date> begin_;
    std::optional<Date> end_;
};

/// The changes of the rule after an instant, up to the end of a year, as far as they change anything.
inline std::vector<Change> changesAfter(Seconds instant, const PosixZoneRule& rule, std::int64_t firstYear,
                                        std::int64_t lastYear) {
    std::vector<Change> changes;
    for (std::int64_t year = firstYear; year <= lastYear; ++year) {
        for (const Change& change : rule.changesOf(year)) {
            if (change.at > instant && change.before != change.after) changes.push_back(change);
        }
    }
    return changes;
}

}  // namespace reference
