#include "tests/support/scripted_platform/Show.hpp"

#include <boost/date_time/posix_time/time_formatters.hpp>

#include <cstdint>
#include <cstdio>

namespace scripted {

namespace {

std::string escaped(std::uint32_t unit) {
    if (unit >= 0x20 && unit < 0x7F) {
        return std::string(1, static_cast<char>(unit));
    }
    char text[16];
    std::snprintf(text, sizeof text, "\\u{%X}", static_cast<unsigned>(unit));
    return text;
}

template <typename Char>
std::string narrowed(std::basic_string_view<Char> text) {
    std::string result;
    for (const Char unit : text) {
        result += escaped(static_cast<std::uint32_t>(unit));
    }
    return result;
}

std::string quoted(const std::string& text) { return "'" + text + "'"; }

}  // namespace

std::string narrow(std::u16string_view text) { return narrowed(text); }
std::string narrow(std::wstring_view text) { return narrowed(text); }
std::u16string widen(std::string_view ascii) { return std::u16string(ascii.begin(), ascii.end()); }

std::string show(bool value) { return value ? "true" : "false"; }
std::string show(std::string_view text) { return quoted(std::string(text)); }
std::string show(std::u16string_view text) { return quoted(narrow(text)); }
std::string show(std::wstring_view text) { return quoted(narrow(text)); }
std::string show(const char* text) { return quoted(text); }
std::string show(const boost::posix_time::ptime& time) { return boost::posix_time::to_iso_string(time); }

std::string showMode(std::ios_base::openmode mode) {
    struct Flag {
        std::ios_base::openmode bit;
        const char* name;
    };
    const Flag flags[] = {{std::ios_base::in, "in"},       {std::ios_base::out, "out"},
                          {std::ios_base::app, "app"},     {std::ios_base::ate, "ate"},
                          {std::ios_base::trunc, "trunc"}, {std::ios_base::binary, "binary"}};
    std::string names;
    for (const Flag& flag : flags) {
        if ((mode & flag.bit) != std::ios_base::openmode()) {
            names += (names.empty() ? "" : "|") + std::string(flag.name);
            mode &= ~flag.bit;
        }
    }
    const int unnamed = static_cast<int>(mode);
    return unnamed == 0 ? names : names + "|" + std::to_string(unnamed);
}

}  // namespace scripted
