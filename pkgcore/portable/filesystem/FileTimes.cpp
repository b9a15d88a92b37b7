#include <pkgcore/portable/filesystem/FileTimes.hpp>

#include <boost/date_time/gregorian/greg_date.hpp>
#include <boost/date_time/posix_time/posix_time_duration.hpp>

#include <cstdint>

namespace fl::filesystem::posix {

using boost::posix_time::ptime;

namespace {

constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;
constexpr std::int64_t kNanosecondsPerMicrosecond = 1'000;
constexpr std::int64_t kFirstSecond = -17'987'443'200;  // 1400-01-01T00:00:00
constexpr std::int64_t kLastSecond = 253'402'300'799;   // 9999-12-31T23:59:59

const ptime& epoch() {
    static const ptime start(boost::gregorian::date(1970, 1, 1));
    return start;
}

}  // namespace

ptime toPtime(const timespec& time) noexcept {
    if (time.tv_sec < kFirstSecond) {
        return ptime(boost::posix_time::neg_infin);
    }
    if (time.tv_sec > kLastSecond) {
        return ptime(boost::posix_time::pos_infin);
    }
    // The nanoseconds count up from the second in negative times too, so this rounds down everywhere.
    return epoch() + boost::posix_time::microseconds(time.tv_sec * kMicrosecondsPerSecond +
                                                     time.tv_nsec / kNanosecondsPerMicrosecond);
}

timespec toTimespec(const ptime& time) noexcept {
    const std::int64_t total = (time - epoch()).total_microseconds();
    std::int64_t seconds = total / kMicrosecondsPerSecond;
    std::int64_t rest = total % kMicrosecondsPerSecond;
    if (rest < 0) {
        --seconds;
        rest += kMicrosecondsPerSecond;
    }
    return {seconds, rest * kNanosecondsPerMicrosecond};
}

}  // namespace fl::filesystem::posix
