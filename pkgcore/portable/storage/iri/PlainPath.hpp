#pragma once

#include <string_view>

namespace foundation::storage::portable {

/// Whether the encoded path of an IRI is canonical at first sight, as most are: letters, digits and some
/// other ASCII that stands for itself, and behind each slash a name that does not begin with a dot. False
/// where only a closer look would tell.
bool isPlainPath(std::u16string_view path) noexcept;

/// A part of the characters that stand for themselves in a path.
constexpr bool isPlainUnit(char16_t unit) noexcept {
    return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
           (unit >= u'&' && unit <= u';') || unit == u'_';
}

/// isPlainPath(), one unit after the other.
constexpr bool arePlainUnits(std::u16string_view path) noexcept {
    char16_t last = u'/';
    for (const char16_t unit : path) {
        if (!isPlainUnit(unit) || (last == u'/' && (unit == u'/' || unit == u'.'))) {
            return false;
        }
        last = unit;
    }
    return last != u'/';
}

}  // namespace foundation::storage::portable
