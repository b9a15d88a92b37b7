#pragma once

#include <array>
#include <cstddef>
#include <string_view>

/// The classes of characters of RFC 3986 and 3987, as far as storage uses them. Code points, so that the
/// upper planes have their own.
namespace foundation::storage::portable {

constexpr bool isAsciiLetter(char32_t point) noexcept {
    return (point >= U'a' && point <= U'z') || (point >= U'A' && point <= U'Z');
}

constexpr bool isAsciiDigit(char32_t point) noexcept { return point >= U'0' && point <= U'9'; }

/// What a scheme goes on with; it begins with a letter.
constexpr bool isSchemeCharacter(char32_t point) noexcept {
    return isAsciiLetter(point) || isAsciiDigit(point) || point == U'+' || point == U'-' || point == U'.';
}

/// Characters that may stand for themselves: some of ASCII, and beyond it iunreserved without the formatting
/// characters that turn the direction of the text, which RFC 3987 (4.1) keeps out.
class LiteralSet {
public:
    constexpr explicit LiteralSet(std::string_view ascii) noexcept {
        for (const char character : ascii) {
            ascii_[static_cast<unsigned char>(character)] = true;
        }
    }

    bool contains(char32_t point) const noexcept {
        return point < ascii_.size() ? ascii_[point] : isLiteralBeyondAscii(point);
    }

    bool containsAscii(char16_t unit) const noexcept { return unit < ascii_.size() && ascii_[unit]; }

    /// How many units at the beginning are ASCII of this set; nearly all texts are nothing else.
    std::size_t asciiRun(std::u16string_view text) const noexcept;

private:
    static bool isLiteralBeyondAscii(char32_t point) noexcept;

    std::array<bool, 0x80> ascii_{};
};

/// In the name of a host: iunreserved and sub-delims.
extern const LiteralSet kHostCharacters;
/// In a segment of a path: these, and ":" and "@".
extern const LiteralSet kSegmentCharacters;
/// In a path: these, and the slash between segments.
extern const LiteralSet kPathCharacters;

/// What stands between the brackets of an address of a host.
bool isAddressCharacter(char32_t point) noexcept;

/// 0 to 15, or -1 for anything but a hexadecimal digit.
int hexDigitValue(char32_t point) noexcept;

/// ASCII alone, as schemes and hosts are compared.
constexpr char16_t lowered(char16_t unit) noexcept {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
}

}  // namespace foundation::storage::portable
