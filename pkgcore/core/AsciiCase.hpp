#pragma once

#include <array>
#include <cstddef>

namespace opc::detail {

/// Entry i is i, except that the entries of A to Z hold a to z.
constexpr std::array<char16_t, 128> makeLowerCaseTable() noexcept {
    std::array<char16_t, 128> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        const bool upper = i >= u'A' && i <= u'Z';
        table[i] = static_cast<char16_t>(upper ? i + (u'a' - u'A') : i);
    }
    return table;
}

inline constexpr std::array<char16_t, 128> kLowerCaseTable = makeLowerCaseTable();

/// Throws foundation::ustring::CtypeInvalidCharacter.
[[noreturn]] void throwInvalidCharacter();

/// The code unit with A to Z mapped to a to z. A unit above 127 throws
/// foundation::ustring::CtypeInvalidCharacter.
inline char16_t toLowerASCII(char16_t unit) {
    if (unit >= kLowerCaseTable.size()) throwInvalidCharacter();
    return kLowerCaseTable[unit];
}

/// Maps A to Z to a to z at the beginning of a text, as far as it is ASCII, and returns how far that is. It
/// may fall short of that by a few units: what comes next is for the caller to map unit by unit.
std::size_t lowerASCIIPrefix(char16_t* text, std::size_t length) noexcept;

/// The length of a common beginning of two texts that is all ASCII and the same but for the case of letters.
/// It may fall short of that by a few units as well.
std::size_t caselessPrefix(const char16_t* a, const char16_t* b, std::size_t length) noexcept;

}  // namespace opc::detail
