#pragma once

#include <pkgcore/platform/Export.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

#include <string>

/// @file
/// Wall-clock time of the place where the machine stands.
namespace fl::i18n::time_zone {

/// A time zone with its daylight-saving rules, past and future.
class PKGCORE_PLATFORM_API timezone {
public:
    /// The empty name is the machine's own zone as it is set at this moment: the environment variable TZ,
    /// else the system's configured zone. TZ is what POSIX and its C library make of it: a zone's name, an
    /// absolute path of a zone file, either with or without a colon in front, or a rule
    /// for the years from 1970 on ("CET-1CEST,M3.5.0,M10.5.0/3"). A value that is none of these counts as
    /// UTC, as it does for every program of the system; so does an empty one. std::invalid_argument for any
    /// other name: nobody needs one here.
    explicit timezone(const std::string& name);
};

/// The wall-clock time of a UTC instant. Special values stay as they are. std::out_of_range for a result
/// outside the years 1400 to 9999.
PKGCORE_PLATFORM_API boost::posix_time::ptime from_utc(const boost::posix_time::ptime& utc,
                                                       const timezone& zone);

/// The UTC instant of a wall-clock time. One that exists twice means the earlier instant; one that was
/// skipped is read with the offset that was in force before the change. Otherwise as from_utc.
PKGCORE_PLATFORM_API boost::posix_time::ptime to_utc(const boost::posix_time::ptime& local,
                                                     const timezone& zone);

}  // namespace fl::i18n::time_zone
