#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/core/Ustring.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

/// @file
/// Times are UTC throughout the library; these functions make them from the clock, show them as text, and
/// take them to and from the wall clock of the machine's place. All may be called from any thread.
namespace opc {

/// Now, to the whole second, in UTC. std::runtime_error where the system cannot tell.
PKGCORE_API boost::posix_time::ptime getCurrentTime();

/// The same instant as the machine's wall clock shows it, fractions of a second included. The zone is looked
/// up at each call: the one that the environment variable TZ names (a name as "Europe/Berlin", an absolute
/// path of a zone file, either with or without a colon in front, or a rule for the years
/// from 1970 on such as "CET-1CEST,M3.5.0,M10.5.0/3"), or else the one that the system is set to. A value of
/// TZ that is none of these counts as UTC, without an error, as does an empty one. Special values stay as
/// they are. std::out_of_range for a result outside the years 1400 to 9999. As with everything that reads the
/// environment, no thread may change it at the same time.
PKGCORE_API boost::posix_time::ptime convertToLocalTime(const boost::posix_time::ptime& utc);

/// The instant of a wall-clock time. Where clocks were set back and a time exists twice, the earlier instant
/// is meant; one that was skipped when clocks were set forward is read with the offset in force before.
/// Otherwise as convertToLocalTime.
PKGCORE_API boost::posix_time::ptime convertToUTCTime(const boost::posix_time::ptime& local);

/// The time as it stands in the form 2021-03-04T05:06:07Z (ISO 8601, extended); fractions of a second are
/// dropped, not rounded. Empty for not_a_date_time and the infinities. std::out_of_range for a time that
/// arithmetic has led outside the years 1400 to 9999.
PKGCORE_API ustring convertTimeToString(boost::posix_time::ptime time);

/// The time that a text in that form names; not_a_date_time for anything else, trailing text and times
/// outside the years 1400 to 9999 included. Never throws for what the text says.
///
/// A text of more than 11 UTF-16 code units needs its T as the eleventh and the two digits of each number, 19
/// units in all. Beyond that the parser is Boost's time_input_facet, and accepts what that accepts:
/// - any single character in place of a "-", ":" or the Z, and no Z at all;
/// - hours, minutes and seconds up to 99, which carry over (23:59:60 is midnight of the next day);
/// - blanks before the year, the month and the day, and a month of one digit;
/// - in up to 11 units, an end behind the year, the month or the day, or behind the character that follows
///   it; what is missing is the first one: 2021-03 is midnight of 1 March;
/// - "+infinity" and "-infinity" in up to 11 units, and these as well as "minimum-date-time" and
///   "maximum-date-time" in place of the hour, the minute or the second of a longer text, in small or capital
///   letters.
/// Whoever wants the exact form alone compares convertTimeToString of the result with the text.
PKGCORE_API boost::posix_time::ptime convertStringToTime(const ustring& text);

}  // namespace opc
