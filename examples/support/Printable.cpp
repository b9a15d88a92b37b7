#include "Printable.hpp"

#include <algorithm>

std::string printable(const opc::ustring& path) {
    std::string text =
        opc::detail::toUTF8String(path, true);  // true: a substitute for what cannot be converted
    std::replace_if(
        text.begin(), text.end(), [](unsigned char unit) { return unit < 0x20 || unit == 0x7F; }, '?');
    return text;
}
