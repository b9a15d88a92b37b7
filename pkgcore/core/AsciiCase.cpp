#include <pkgcore/core/AsciiCase.hpp>

#include <pkgcore/core/CtypeException.hpp>

#include <boost/throw_exception.hpp>

#include <cstdint>
#include <cstring>

namespace opc::detail {
namespace {

/// Four code units in the lanes of one word.
using Units = std::uint64_t;
constexpr std::size_t kLanes = sizeof(Units) / sizeof(char16_t);

constexpr Units inEachLane(Units value) noexcept { return value * 0x0001'0001'0001'0001; }

Units load(const char16_t* units) noexcept {
    Units word;
    std::memcpy(&word, units, sizeof word);
    return word;
}

void store(char16_t* units, Units word) noexcept { std::memcpy(units, &word, sizeof word); }

bool isASCII(Units units) noexcept { return (units & inEachLane(0xFF80)) == 0; }

/// Sets the bit 0x20 in each lane that holds a letter from A to Z. For ASCII lanes alone: their sums stay
/// within the lane and reach its bit 0x80 exactly from the named character on.
Units lower(Units units) noexcept {
    const Units fromA = units + inEachLane(0x80 - u'A');
    const Units beyondZ = units + inEachLane(0x80 - (u'Z' + 1));
    return units | ((fromA & ~beyondZ) & inEachLane(0x80)) >> 2;
}

}  // namespace

void throwInvalidCharacter() {
    // Wrapped, so that it can be copied into an exception pointer.
    boost::throw_exception(foundation::ustring::CtypeInvalidCharacter());
}

std::size_t lowerASCIIPrefix(char16_t* text, std::size_t length) noexcept {
    std::size_t i = 0;
    for (; i + kLanes <= length; i += kLanes) {
        const Units units = load(text + i);
        if (!isASCII(units)) break;
        store(text + i, lower(units));
    }
    return i;
}

std::size_t caselessPrefix(const char16_t* a, const char16_t* b, std::size_t length) noexcept {
    std::size_t i = 0;
    for (; i + kLanes <= length; i += kLanes) {
        const Units left = load(a + i);
        const Units right = load(b + i);
        if (!isASCII(left | right)) break;
        if (lower(left) != lower(right)) break;
    }
    return i;
}

}  // namespace opc::detail
