#include <pkgcore/platform/i18n/TimeZone.hpp>

#include <boost/date_time/gregorian/gregorian_types.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <stdexcept>
#include <system_error>

namespace fl::i18n::time_zone {

using boost::posix_time::ptime;
using boost::posix_time::seconds;

namespace {

using Seconds = std::int64_t;  // since 1970-01-01T00:00:00, of UTC or of the wall clock

constexpr Seconds kHour = 3600;
/// RFC 8536 allows zone files no more, and POSIX allows rules 24 hours and an hour of daylight time. No place
/// was ever further from UTC than Manila, 16 hours, before 1845.
constexpr Seconds kWidestOffset = 26 * kHour;
/// Two changes of one zone never lie closer together.
constexpr Seconds kClosestChanges = 6 * kHour;

/// Rounds down, so that a time before 1970 keeps its fraction of a second above the whole one.
Seconds wholeSeconds(const ptime& time) {
    static const ptime epoch(boost::gregorian::date(1970, 1, 1));
    const boost::posix_time::time_duration since = time - epoch;
    const Seconds total = since.total_seconds();
    return total - (since < seconds(total) ? 1 : 0);
}

static_assert(sizeof(std::time_t) >= sizeof(Seconds), "the years 1400 to 9999 do not fit into 32 bits");

/// Seconds that the wall clock is ahead of UTC at an instant.
Seconds offsetAt(Seconds utc) {
    const std::time_t instant = utc;
    std::tm fields;
    if (::localtime_r(&instant, &fields) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "No local time for this instant");
    }
    return fields.tm_gmtoff;
}

/// A stretch of time, from `begin` to before `end`, with one offset.
struct Stretch {
    Seconds begin;
    Seconds end;
    Seconds offset;
};

/// The first instant after `same`, and not after `other`, that has another offset than `same` has.
Seconds findChange(Seconds same, Seconds other, Seconds offset) {
    while (other - same > 1) {
        const Seconds middle = same + (other - same) / 2;
        (offsetAt(middle) == offset ? same : other) = middle;
    }
    return other;
}

/// The stretch that begins at `begin`, as far as `limit`.
Stretch stretchFrom(Seconds begin, Seconds limit) {
    const Seconds offset = offsetAt(begin);
    Seconds known = begin;
    while (known < limit) {
        const Seconds probe = std::min(known + kClosestChanges, limit);
        if (offsetAt(probe) != offset) {
            return {begin, findChange(known, probe, offset), offset};
        }
        known = probe;
    }
    return {begin, limit, offset};
}

/// The instant at which the wall clock shows `local`: the first that does, or else the one that it would be
/// had the change that skips it not come.
Seconds instantAmongChanges(Seconds local) {
    const Seconds limit = local + kWidestOffset;
    Seconds skipped = local;
    for (Seconds begin = local - kWidestOffset; begin < limit;) {
        const Stretch stretch = stretchFrom(begin, limit);
        const Seconds instant = local - stretch.offset;
        if (instant >= stretch.begin && instant < stretch.end) {
            return instant;
        }
        if (instant >= stretch.end) {
            skipped = instant;  // the clock had not come that far when the change took place
        }
        begin = stretch.end;
    }
    return skipped;
}

/// As instantAmongChanges, and quick where no clock is changed for a day before and after. Were a clock set
/// forward and back again in between, which none ever was within four days, the later of two instants might
/// come.
Seconds instantOf(Seconds local) {
    const Seconds offset = offsetAt(local - kWidestOffset);
    const bool lasts = offsetAt(local - offset) == offset && offsetAt(local + kWidestOffset) == offset;
    return lasts ? local - offset : instantAmongChanges(local);
}

/// Boost's own arithmetic leaves the years that its dates know without a word.
ptime shifted(const ptime& time, Seconds by) {
    static const ptime first(boost::date_time::min_date_time);
    static const ptime last(boost::date_time::max_date_time);
    const ptime result = time + seconds(by);
    if (result < first || result > last) {
        throw std::out_of_range("The time in the other zone lies outside the years 1400 to 9999");
    }
    return result;
}

}  // namespace

timezone::timezone(const std::string& name) {
    if (!name.empty()) {
        throw std::invalid_argument("Only the machine's own time zone is known: " + name);
    }
    ::tzset();
}

ptime from_utc(const ptime& utc, const timezone& /*zone*/) {
    return utc.is_special() ? utc : shifted(utc, offsetAt(wholeSeconds(utc)));
}

ptime to_utc(const ptime& local, const timezone& /*zone*/) {
    if (local.is_special()) {
        return local;
    }
    const Seconds shown = wholeSeconds(local);
    return shifted(local, instantOf(shown) - shown);
}

}  // namespace fl::i18n::time_zone
