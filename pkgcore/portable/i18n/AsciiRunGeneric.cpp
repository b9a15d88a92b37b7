#include <pkgcore/portable/i18n/AsciiRun.hpp>

#include <pkgcore/portable/i18n/AsciiUnits.hpp>

namespace fl::i18n::portable {

std::size_t asciiRun(const char16_t* in, std::size_t length) noexcept { return asciiUnits(in, length); }

std::size_t narrowAsciiRun(const char16_t* in, std::size_t length, char* out) noexcept {
    return narrowAsciiUnits(in, length, out);
}

std::size_t widenAsciiRun(const char* in, std::size_t length, char16_t* out) noexcept {
    return widenAsciiUnits(in, length, out);
}

std::size_t lowerAsciiRun(const char16_t* in, std::size_t length, char16_t* out) noexcept {
    return lowerAsciiUnits(in, length, out);
}

std::size_t findUnit(const char16_t* in, std::size_t length, char16_t unit) noexcept {
    return findOneByOne(in, length, unit);
}

bool holdsNul(const char16_t* in, std::size_t length) noexcept { return holdsNulUnit(in, length); }

}  // namespace fl::i18n::portable
