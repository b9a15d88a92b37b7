#pragma once

#include <cstddef>

/// Counts or converts the ASCII at the beginning of a text, in vector steps where the processor has them.
///
/// Each function handles the leading run of units below 0x80 (a NUL is one of them) and returns its length.
/// `out` must have room for `length` elements and not overlap `in`; elements behind the run may be
/// overwritten with anything, none behind `length` is touched.
namespace fl::i18n::portable {

std::size_t asciiRun(const char16_t* in, std::size_t length) noexcept;

std::size_t narrowAsciiRun(const char16_t* in, std::size_t length, char* out) noexcept;

std::size_t widenAsciiRun(const char* in, std::size_t length, char16_t* out) noexcept;

/// Copies the run with A to Z turned into a to z.
std::size_t lowerAsciiRun(const char16_t* in, std::size_t length, char16_t* out) noexcept;

/// Where the first code unit that is `unit` stands; `length` where there is none. Of the whole text, as
/// below.
std::size_t findUnit(const char16_t* in, std::size_t length, char16_t unit) noexcept;

/// Whether any code unit is a NUL; of the whole text, not of its ASCII alone.
bool holdsNul(const char16_t* in, std::size_t length) noexcept;

}  // namespace fl::i18n::portable
