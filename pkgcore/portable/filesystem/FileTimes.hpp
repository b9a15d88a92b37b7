#pragma once

#include <boost/date_time/posix_time/ptime.hpp>

#include <ctime>

/// Times between the system's seconds since 1970 and ptime, both UTC.
namespace fl::filesystem::posix {

/// The time, rounded down to the microsecond. One outside the years 1400 to 9999, which ptime cannot tell, is
/// the infinity on its side.
boost::posix_time::ptime toPtime(const timespec& time) noexcept;

/// The same instant; `time` must not be special.
timespec toTimespec(const boost::posix_time::ptime& time) noexcept;

}  // namespace fl::filesystem::posix
