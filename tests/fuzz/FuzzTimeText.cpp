// Reads the input as UTF-8 and as UTF-16 and compares the time that it names with the documented rules.

#include <pkgcore/core/TimeConversions.hpp>

#include "tests/reference/ReferenceUtf8.hpp"
#include "tests/reference/TimeTextReader.hpp"

#include <boost/date_time/posix_time/posix_time.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

namespace {

using boost::posix_time::ptime;

void require(bool condition) {
    if (!condition) std::abort();
}

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    check(reference::decodeUtf8(std::string(data, data + size)).text);

    std::u16string text(size / sizeof(char16_t), u'\0');
    if (!text.empty()) std::memcpy(text.data(), data, text.size() * sizeof(char16_t));
    check(text);
    return 0;
}
