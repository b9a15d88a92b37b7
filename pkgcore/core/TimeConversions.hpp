#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/core/Ustring.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

/// Times are UTC throughout the library; these functions make them from the clock, show them as text, and
/// take them to and from the wall clock of the machine's place. All may be called from any thread.
namespace opc {

/// Now, to the whole second, in UTC. std::runtime_error where the system cannot tell.
PKGCORE_API boost::posix_time::ptime getCurrentTime();

/// The same instant as the machine's wall clock shows it (the zone that TZ or else the system names at the
/// time of the call; a value of TZ that the system does not know counts as UTC). Special values stay as they
/// are.
PKGCORE_API boost::posix_time::ptime convertToLocalTime(const boost::posix_time::ptime& utc);

/// The instant of a wall-clock time. Where clocks were set back and a time exists twice, the earlier instant
/// is meant; one that was skipped when clocks were set forward is read with the offset in force before.
PKGCORE_API boost::posix_time::ptime convertToUTCTime(const boost::posix_time::ptime& local);

/// The time as it stands in the form 2021-03-04T05:06:07Z (ISO 8601, extended); fractions of a second are
/// dropped. Empty for not_a_date_time and the infinities.
PKGCORE_API ustring convertTimeToString(boost::posix_time::ptime time);

/// The time that a text in that form names; not_a_date_time for anything else, trailing text included. Never
/// throws for what the text says.
PKGCORE_API boost::posix_time::ptime convertStringToTime(const ustring& text);

}  // namespace opc
