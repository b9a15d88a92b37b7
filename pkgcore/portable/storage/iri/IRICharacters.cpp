#include <pkgcore/portable/storage/iri/IRICharacters.hpp>

#include <algorithm>
#include <iterator>

namespace foundation::storage::portable {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

/// ucschar below the upper planes.
constexpr Range kLetters[] = {{0xA0, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFEF}};

/// LRM, RLM, LRE to RLO.
constexpr Range kDirectionMarks[] = {{0x200E, 0x200F}, {0x202A, 0x202E}};

/// Each set is a part of the one before it.
constexpr std::string_view kPathAscii =
    "/"
    ":@"
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
    "-._~"          // unreserved
    "!$&'()*+,;=";  // sub-delims
constexpr std::string_view kSegmentAscii = kPathAscii.substr(1);
constexpr std::string_view kHostAscii = kSegmentAscii.substr(2);

template <std::size_t Count>
bool isIn(const Range (&ranges)[Count], char32_t point) noexcept {
    return std::any_of(std::begin(ranges), std::end(ranges),
                       [point](const Range& range) { return point >= range.first && point <= range.last; });
}

/// The last two characters of each plane are none, and plane 14 begins with tags.
bool isUpperLetter(char32_t point) noexcept {
    return point >= 0x10000 && point < 0xF0000 && (point & 0xFFFF) <= 0xFFFD &&
           (point < 0xE0000 || point >= 0xE1000);
}

}  // namespace

constexpr LiteralSet kHostCharacters(kHostAscii);
constexpr LiteralSet kSegmentCharacters(kSegmentAscii);
constexpr LiteralSet kPathCharacters(kPathAscii);

bool LiteralSet::isLiteralBeyondAscii(char32_t point) noexcept {
    return (isIn(kLetters, point) && !isIn(kDirectionMarks, point)) || isUpperLetter(point);
}

std::size_t LiteralSet::asciiRun(std::u16string_view text) const noexcept {
    const auto* const end =
        std::find_if_not(text.begin(), text.end(), [this](char16_t unit) { return containsAscii(unit); });
    return static_cast<std::size_t>(end - text.begin());
}

bool isAddressCharacter(char32_t point) noexcept {
    return hexDigitValue(point) >= 0 || point == U':' || point == U'.';
}

int hexDigitValue(char32_t point) noexcept {
    if (isAsciiDigit(point)) {
        return static_cast<int>(point - U'0');
    }
    const char32_t letter = point | 0x20;
    return point < 0x80 && letter >= U'a' && letter <= U'f' ? static_cast<int>(letter - U'a') + 10 : -1;
}

}  // namespace foundation::storage::portable
