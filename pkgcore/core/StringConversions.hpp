#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/core/Ustring.hpp>

#include <string>

/// @file
/// Conversions between UTF-16 text and the narrow and wide texts of other interfaces, and simple work on
/// characters.
///
/// Results are complete or absent: a conversion that fails throws and returns no part. A failure is an
/// Exception whose text says what is wrong and whose code() is cleared (it does not report failure: the
/// exception itself tells). A NUL is a character like any other. Any thread may call any function at any
/// time.
///
/// `lenient` has one meaning throughout. false: the first malformed sequence of the input throws. true: each
/// maximal malformed subsequence becomes one U+FFFD (Unicode, section 3.9), and nothing throws but
/// std::bad_alloc.
namespace opc {

/// Text in the default narrow encoding: that of the locale which the environment names at the time of the
/// call (LC_ALL, LC_CTYPE, LANG), whether or not the process called setlocale. "C", "POSIX", an unknown
/// encoding and no locale at all count as UTF-8. No other thread may be changing the environment during the
/// call.
PKGCORE_API ustring toString(const std::string& s, bool lenient);

/// ASCII only; anything else throws.
PKGCORE_API std::string toASCIIString(const ustring& u);

/// ASCII only, up to the first NUL; a byte above 0x7F throws. A null pointer counts as empty.
PKGCORE_API ustring toStringFromASCIIStringLiteral(const char* literal);

/// Into the user's default encoding, which is the default narrow encoding of toString. Throws on an unpaired
/// surrogate and on a character that the encoding does not have.
PKGCORE_API std::string toUDEString(const ustring& u);

/// From UTF-16 or UTF-32, whichever fits wchar_t; unpaired surrogates pass unchanged. A value that is no code
/// point leaves as the text library's own exception (fl::i18n::CvtExceptionBase), not as an Exception.
PKGCORE_API ustring toString(const std::wstring& w);

/// Into UTF-16 or UTF-32, whichever fits wchar_t; unpaired surrogates pass unchanged.
PKGCORE_API std::wstring toWideString(const ustring& u);

/// Full lower-casing in the root locale (Unicode, section 3.13): the same for every user, depending on the
/// surroundings of a character (final sigma), and not always of the same length. Unpaired surrogates pass
/// unchanged. std::length_error for 2^31 code units and more.
PKGCORE_API ustring toLowerString(const ustring& u);

/// A to Z become a to z. A code unit above 127 throws an Exception with the text "Invalid character error.".
PKGCORE_API ustring toLowerASCIIString(const ustring& u);

/// Compares ASCII texts without regard to the case of letters.
///
/// The result is the distance of the first two characters that differ when lower-cased, or else -1, 0 or 1 as
/// `a` is shorter than, as long as, or longer than `b`. A code unit above 127 at a position that is compared
/// throws an Exception with the text "Invalid character error."; behind the shorter text and behind the first
/// difference nothing is looked at.
PKGCORE_API int caselessCompare(const ustring& a, const ustring& b);

/// Whether the text holds a character with the Unicode property White_Space, no-break spaces included.
PKGCORE_API bool hasWhitespace(const ustring& u);

namespace detail {

/// As toString, from UTF-8.
PKGCORE_API ustring toStringFromUTF8String(const std::string& s, bool lenient);

/// Into UTF-8; what is malformed here is an unpaired surrogate.
PKGCORE_API std::string toUTF8String(const ustring& u, bool lenient);

}  // namespace detail
}  // namespace opc
