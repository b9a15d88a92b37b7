#pragma once

#include <boost/date_time/posix_time/ptime.hpp>

#include <ios>
#include <string>
#include <string_view>
#include <type_traits>

/// Arguments and results as text, for the log of calls. Text stands in single quotes, 'like this'; whatever
/// it holds beside printable ASCII is written \u{hex}.
namespace scripted {

std::string narrow(std::u16string_view text);
std::string narrow(std::wstring_view text);
std::u16string widen(std::string_view ascii);

std::string show(bool value);
std::string show(std::string_view text);
std::string show(std::u16string_view text);
std::string show(std::wstring_view text);
std::string show(const char* text);
std::string show(const boost::posix_time::ptime& time);

/// The names of the flags, joined by "|": in|binary. Flags without a name of the standard are shown as a
/// number.
std::string showMode(std::ios_base::openmode mode);

inline std::string show(const std::string& text) { return show(std::string_view(text)); }
inline std::string show(const std::u16string& text) { return show(std::u16string_view(text)); }
inline std::string show(const std::wstring& text) { return show(std::wstring_view(text)); }

/// Text that is shown as it is, without quotes.
struct Verbatim {
    std::string text;
};
inline std::string show(const Verbatim& verbatim) { return verbatim.text; }

template <typename Number, std::enable_if_t<std::is_integral_v<Number> || std::is_enum_v<Number>, int> = 0>
std::string show(Number value) {
    return std::to_string(static_cast<long long>(value));
}

}  // namespace scripted
