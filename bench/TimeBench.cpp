// Time conversions beside the C library and Boost.

#include <pkgcore/core/TimeConversions.hpp>

#include "bench/support/Suite.hpp"
#include "bench/support/WorkFolder.hpp"

#include <boost/date_time/c_local_time_adjustor.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <time.h>

#include <cstdint>
#include <cstdlib>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using bench::Session;
using bench::Suite;
using boost::posix_time::ptime;
using boost::posix_time::seconds;
using boost::posix_time::time_duration;

ptime epoch() { return ptime(boost::gregorian::date(1970, 1, 1)); }

/// One after the other, over and over, so that no row lives on one answer.
template <typename Item>
class Cycle {
public:
    explicit Cycle(std::vector<Item> items) : items_(std::move(items)) {}
    const Item& next() { return items_[at_++ % items_.size()]; }

private:
    std::vector<Item> items_;
    std::size_t at_ = 0;
};

std::vector<std::time_t> instantsOf(int year) {
    std::mt19937 random(20260714);
    const ptime begin(boost::gregorian::date(static_cast<unsigned short>(year), 1, 1));
    const std::time_t first = (begin - epoch()).total_seconds();
    std::vector<std::time_t> instants;
    for (int i = 0; i < 1024; ++i)
        instants.push_back(first + static_cast<std::time_t>(random() % (365 * 86'400)));
    return instants;
}

std::vector<ptime> timesAt(const std::vector<std::time_t>& instants) {
    std::vector<ptime> times;
    for (const std::time_t instant : instants) times.push_back(epoch() + seconds(instant));
    return times;
}

/// Null: unset.
void setZone(const char* zone) {
    if (zone == nullptr) {
        ::unsetenv("TZ");
    } else {
        ::setenv("TZ", zone, 1);
    }
    ::tzset();
}

void benchLocal(Session& session, const std::string& title, int year) {
    const std::vector<std::time_t> instants = instantsOf(year);
    Cycle<std::time_t> bare(instants);
    Cycle<ptime> ours(timesAt(instants));
    Cycle<ptime> theirs(timesAt(instants));
    Suite suite(session, "UTC to local time, " + title);
    suite.limit("tzset and localtime_r of a time_t", [&] {
        std::tm fields;
        ::tzset();
        bench::require(::localtime_r(&bare.next(), &fields) != nullptr, "localtime_r");
        return fields;
    });
    suite.row("pkgcore convertToLocalTime", [&] { return opc::convertToLocalTime(ours.next()); })
        .atMost(1.25);
    suite.row("Boost c_local_adjustor",
              [&] { return boost::date_time::c_local_adjustor<ptime>::utc_to_local(theirs.next()); });
    suite.run();
}

void benchUTC(Session& session, const std::string& title, int year) {
    std::vector<std::tm> fields;
    std::vector<ptime> times;
    for (const std::time_t instant : instantsOf(year)) {
        fields.emplace_back();
        bench::require(::localtime_r(&instant, &fields.back()) != nullptr, "localtime_r");
        fields.back().tm_isdst = -1;
        times.push_back(boost::posix_time::ptime_from_tm(fields.back()));
    }
    Cycle<std::tm> bare(fields);
    Cycle<ptime> ours(times);
    Suite suite(session, "Local time to UTC, " + title);
    suite.limit("mktime of a struct tm", [&] {
        std::tm copy = bare.next();
        return ::mktime(&copy);
    });
    suite.row("pkgcore convertToUTCTime", [&] { return opc::convertToUTCTime(ours.next()); }).atMost(2.2);
    suite.run();
}

void put(char16_t*& out, std::int64_t value, int digits, char16_t mark) {
    for (int i = digits - 1; i >= 0; --i, value /= 10) out[i] = static_cast<char16_t>(u'0' + value % 10);
    out[digits] = mark;
    out += digits + 1;
}

/// The limit of writing.
std::u16string writeByHand(const ptime& time) {
    const auto date = time.date().year_month_day();
    const time_duration hour = time.time_of_day();
    std::u16string text(20, u'\0');
    char16_t* out = text.data();
    put(out, date.year, 4, u'-');
    put(out, date.month.as_number(), 2, u'-');
    put(out, date.day, 2, u'T');
    put(out, hour.hours(), 2, u':');
    put(out, hour.minutes(), 2, u':');
    put(out, hour.seconds(), 2, u'Z');
    return text;
}

int number(const std::u16string& text, std::size_t at, std::size_t digits) {
    int value = 0;
    for (std::size_t i = at; i < at + digits; ++i) value = value * 10 + (text[i] - u'0');
    return value;
}

/// The limit of reading, of texts in the exact form.
ptime readByHand(const std::u16string& text) {
    const boost::gregorian::date date(static_cast<unsigned short>(number(text, 0, 4)),
                                      static_cast<unsigned short>(number(text, 5, 2)),
                                      static_cast<unsigned short>(number(text, 8, 2)));
    return ptime(date, time_duration(number(text, 11, 2), number(text, 14, 2), number(text, 17, 2)));
}

std::string writeWithPutTime(const ptime& time) {
    const std::tm fields = boost::posix_time::to_tm(time);
    std::ostringstream stream;
    stream << std::put_time(&fields, "%Y-%m-%dT%H:%M:%SZ");
    return stream.str();
}

ptime readWithGetTime(const std::string& text) {
    std::tm fields{};
    std::istringstream stream(text);
    stream >> std::get_time(&fields, "%Y-%m-%dT%H:%M:%SZ");
    return boost::posix_time::ptime_from_tm(fields);
}

void benchText(Session& session) {
    const std::vector<ptime> times = timesAt(instantsOf(2026));
    Cycle<ptime> byHand(times), ours(times), boosts(times), standard(times);
    Suite suite(session, "Time to text");
    suite.limit("by hand", [&] { return writeByHand(byHand.next()); });
    suite.row("pkgcore convertTimeToString", [&] { return opc::convertTimeToString(ours.next()); });
    suite.row("Boost to_iso_extended_string",
              [&] { return boost::posix_time::to_iso_extended_string(boosts.next()); });
    suite.row("std::put_time", [&] { return writeWithPutTime(standard.next()); });
    suite.run();
}

void benchReading(Session& session) {
    std::vector<std::u16string> texts;
    std::vector<std::string> narrow, narrowWithoutZ;
    for (const ptime& time : timesAt(instantsOf(2026))) {
        texts.push_back(writeByHand(time));
        narrowWithoutZ.push_back(boost::posix_time::to_iso_extended_string(time));
        narrow.push_back(narrowWithoutZ.back() + "Z");
    }
    Cycle<std::u16string> byHand(texts), ours(texts);
    Cycle<std::string> boosts(narrowWithoutZ), standard(narrow);
    Suite suite(session, "Text to time");
    suite.limit("by hand, unchecked", [&] { return readByHand(byHand.next()); });
    suite.row("pkgcore convertStringToTime", [&] { return opc::convertStringToTime(ours.next()); });
    suite.row("Boost from_iso_extended_string",
              [&] { return boost::posix_time::from_iso_extended_string(boosts.next()); });
    suite.row("std::get_time", [&] { return readWithGetTime(standard.next()); });
    suite.run();
}

}  // namespace

int main(int argc, char** argv) {
    Session session(argc, argv);
    setZone("Europe/Berlin");
    benchLocal(session, "TZ set, listed year", 2026);
    benchUTC(session, "TZ set, listed year", 2026);
    benchLocal(session, "TZ set, year by rule", 2100);
    benchUTC(session, "TZ set, year by rule", 2100);
    setZone(nullptr);
    benchLocal(session, "TZ unset", 2026);
    benchUTC(session, "TZ unset", 2026);
    benchText(session);
    benchReading(session);
    return session.exitCode();
}
