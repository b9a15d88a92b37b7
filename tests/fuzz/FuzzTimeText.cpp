// Reads the input as a text and compares the time that it names with the documented rules; and as a time,
// which has to survive being written and read.

#include <pkgcore/core/TimeConversions.hpp>

#include "tests/fuzz/Input.hpp"
#include "tests/reference/TimeTextReader.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

namespace {

using boost::posix_time::ptime;
using fuzz::require;

/// Whether the text may name one of the infinities, the first or the last time.
bool hasSpecialName(std::u16string text) {
    for (char16_t& c : text) {
        if (c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c - u'A' + u'a');
    }
    return text.find(u"infinity") != std::u16string::npos || text.find(u"-date-time") != std::u16string::npos;
}

void check(const std::u16string& text) {
    const ptime time = opc::convertStringToTime(text);
    const std::u16string shown = opc::convertTimeToString(time);
    require(shown.empty() == time.is_special());
    if (hasSpecialName(text)) return;
    const std::optional<reference::Seconds> expected = reference::TimeTextReader(text).read();
    require(time.is_not_a_date_time() == !expected);
    if (!expected) return;
    const std::string wanted = reference::textOf(*expected);
    require(shown == std::u16string(wanted.begin(), wanted.end()));
    require(opc::convertStringToTime(shown) == time);
}

/// Any second from the first one that can be written to the last one.
reference::Seconds timeFrom(const std::uint8_t* data) {
    const reference::Seconds first = reference::secondsAt(1400, 1, 1);
    const reference::Seconds last = reference::secondsAt(9999, 12, 31, 23, 59, 59);
    std::uint64_t number = 0;
    std::memcpy(&number, data, sizeof number);
    return first + static_cast<reference::Seconds>(number % static_cast<std::uint64_t>(last - first + 1));
}

void checkTime(reference::Seconds seconds) {
    const ptime epoch(boost::gregorian::date(1970, 1, 1));
    const ptime time = epoch + boost::posix_time::seconds(seconds);
    const std::string wanted = reference::textOf(seconds);
    const std::u16string shown = opc::convertTimeToString(time + boost::posix_time::microseconds(999'999));
    require(shown == std::u16string(wanted.begin(), wanted.end()));
    require(opc::convertStringToTime(shown) == time);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    check(fuzz::textOf(fuzz::bytesOf(data, size)));
    if (size == sizeof(std::uint64_t)) checkTime(timeFrom(data));
    return 0;
}
