#pragma once

#include <string>
#include <string_view>

namespace fl::i18n::portable {

/// The encoding of the locale that the environment names at this moment, whether or not the process called
/// setlocale: the first of LC_ALL, LC_CTYPE and LANG that is set and not empty (POSIX, Environment
/// Variables, 8.2).
///
/// The environment is read at each call. As with every reader of it, no other thread may be changing it
/// meanwhile.
std::string userEncodingName();

/// The encoding that a locale name stands for: its code set if it has one ("de_DE.ISO-8859-15@euro"), else
/// the one that the C library of GNU gives the locale ("de_DE": ISO-8859-1). UTF-8 for "C", "POSIX" and what
/// nobody knows.
std::string_view encodingOfLocale(std::string_view locale) noexcept;

}  // namespace fl::i18n::portable
