#pragma once

/// The classes of characters of RFC 3986 and 3987, as far as storage uses them. Code points, so that the
/// upper planes have their own.
namespace foundation::storage::portable {

bool isAsciiLetter(char32_t point) noexcept;
bool isAsciiDigit(char32_t point) noexcept;

/// What a scheme goes on with; it begins with a letter.
bool isSchemeCharacter(char32_t point) noexcept;

/// What stands for itself in the name of a host: iunreserved and sub-delims. Formatting characters that turn
/// the direction of the text, which RFC 3987 (4.1) keeps out, are not among them.
bool isHostCharacter(char32_t point) noexcept;

/// What stands for itself in a segment of a path: that, and ":" and "@".
bool isSegmentCharacter(char32_t point) noexcept;

/// What stands between the brackets of an address of a host.
bool isAddressCharacter(char32_t point) noexcept;

/// 0 to 15, or -1 for anything but a hexadecimal digit.
int hexDigitValue(char32_t point) noexcept;

/// ASCII alone, as schemes and hosts are compared.
char16_t lowered(char16_t unit) noexcept;

}  // namespace foundation::storage::portable
