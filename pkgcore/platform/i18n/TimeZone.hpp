#pragma once

#include <pkgcore/platform/Export.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

#include <string>

/// Wall-clock time of the place where the machine stands.
namespace fl::i18n::time_zone {

/// A time zone with its daylight-saving rules, past and future.
class PKGCORE_PLATFORM_API timezone {
public:
    /// The empty name is the machine's own zone as it is set at this moment (POSIX: the environment variable
    /// TZ, else the system's configured zone). std::invalid_argument for any other name: nobody needs one
    /// here. A value of TZ that the system does not know counts as UTC, as it does for every program of a
    /// POSIX system.
    explicit timezone(const std::string& name);
};

/// The wall-clock time of a UTC instant. Special values stay as they are. A result outside the years 1400 to
/// 9999 is boost's std::out_of_range.
PKGCORE_PLATFORM_API boost::posix_time::ptime from_utc(const boost::posix_time::ptime& utc,
                                                       const timezone& zone);

/// The UTC instant of a wall-clock time. One that exists twice means the earlier instant; one that was
/// skipped is read with the offset that was in force before the change. Otherwise as from_utc.
PKGCORE_PLATFORM_API boost::posix_time::ptime to_utc(const boost::posix_time::ptime& local,
                                                     const timezone& zone);

}  // namespace fl::i18n::time_zone
