#pragma once

#include <iomanip>
#include <sstream>
#include <string>

namespace test {

/// The units of a text in hexadecimal, for messages and for the names of tests.
template <typename Unit>
std::string hex(const std::basic_string<Unit>& text) {
    constexpr unsigned long kMask = sizeof(Unit) == 1 ? 0xFF : ~0UL;
    std::ostringstream out;
    out << std::hex << std::uppercase << std::setfill('0');
    for (const Unit unit : text) {
        out << (out.tellp() == 0 ? "" : " ") << std::setw(2 * sizeof unit)
            << (static_cast<unsigned long>(unit) & kMask);
    }
    return out.str();
}

}  // namespace test
