#include <pkgcore/core/TimeConversions.hpp>

#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/platform/i18n/Initialize.hpp>
#include <pkgcore/platform/i18n/StdLocale.hpp>
#include <pkgcore/platform/i18n/TimeZone.hpp>

#include <boost/date_time/posix_time/posix_time.hpp>

#include <algorithm>
#include <cstdint>
#include <locale>
#include <sstream>

namespace opc {

using boost::posix_time::not_a_date_time;
using boost::posix_time::ptime;
namespace time_zone = fl::i18n::time_zone;

namespace {

constexpr wchar_t kFormat[] = L"%Y-%m-%dT%H:%M:%SZ";

/// The locale takes the facet over.
template <typename Facet>
std::locale localeWith() {
    return std::locale(fl::i18n::facet::get_global_std_locale(), new Facet(kFormat));
}

/// The parser asks the C library whether a character is a blank or a digit, which is defined for a byte and
/// reads stray memory for more. Nothing beyond ASCII is a blank or a digit of a time.
std::wstring inASCII(std::wstring text) {
    constexpr std::uint32_t kLastOfASCII = 0x7F;
    const auto isBeyond = [](wchar_t c) { return static_cast<std::uint32_t>(c) > kLastOfASCII; };
    std::replace_if(text.begin(), text.end(), isBeyond, L'?');
    return text;
}

/// The parser adds up a date and a time of day without a look at where that leads.
bool isWithinRange(const ptime& time) {
    return time.is_special() || time <= ptime(boost::date_time::max_date_time);
}

/// What the stream's parser makes of the whole text; it is lenient about separators and missing fields.
ptime parseWhole(const ustring& text, const std::locale& locale) {
    std::wistringstream stream(inASCII(fl::i18n::to_wstring(text)));
    stream.imbue(locale);
    ptime time(not_a_date_time);
    stream >> time;
    const bool whole = !stream.fail() && stream.peek() == std::wistringstream::traits_type::eof();
    return whole && isWithinRange(time) ? time : ptime(not_a_date_time);
}

/// Whether a text that holds more than a date has a time of full length behind a T.
bool hasTimeBehindT(const ustring& text) {
    constexpr std::size_t kPositionOfT = 10;
    constexpr std::size_t kLengthUpToSeconds = 19;
    return text.size() <= kPositionOfT + 1 ||
           (text[kPositionOfT] == u'T' && text.size() >= kLengthUpToSeconds);
}

}  // namespace

ptime getCurrentTime() { return boost::posix_time::second_clock::universal_time(); }

ptime convertToLocalTime(const ptime& utc) {
    return time_zone::from_utc(utc, time_zone::timezone(std::string()));
}

ptime convertToUTCTime(const ptime& local) {
    return time_zone::to_utc(local, time_zone::timezone(std::string()));
}

ustring convertTimeToString(ptime time) {
    fl::i18n::initialize();
    static const std::locale locale = localeWith<boost::posix_time::wtime_facet>();
    if (time.is_special()) {
        return ustring();
    }
    std::wostringstream stream;
    stream.imbue(locale);
    stream << time;
    return fl::i18n::to_ustring(stream.str());
}

ptime convertStringToTime(const ustring& text) {
    fl::i18n::initialize();
    static const std::locale locale = localeWith<boost::posix_time::wtime_input_facet>();
    const ptime time = parseWhole(text, locale);
    return hasTimeBehindT(text) ? time : ptime(not_a_date_time);
}

}  // namespace opc
