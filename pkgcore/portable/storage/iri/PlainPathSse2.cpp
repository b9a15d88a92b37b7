#include <pkgcore/portable/storage/iri/PlainPath.hpp>

#include <emmintrin.h>

#include <algorithm>
#include <cstddef>

namespace foundation::storage::portable {

namespace {

constexpr std::size_t kUnits = 16;  // UTF-16 code units that make a vector of bytes

__m128i all(char byte) noexcept { return _mm_set1_epi8(byte); }

/// The units as bytes. Saturation turns those beyond Latin-1 into 0 and 0xFF, which are not plain either.
__m128i loadAsBytes(const char16_t* units) noexcept {
    const auto* const halves = reinterpret_cast<const __m128i*>(units);
    return _mm_packus_epi16(_mm_loadu_si128(halves), _mm_loadu_si128(halves + 1));
}

/// Unsigned comparison: what is left above the length of the range is 0 within it.
__m128i isFromTo(__m128i bytes, char first, char last) noexcept {
    const __m128i offset = _mm_sub_epi8(bytes, all(first));
    const __m128i above = _mm_subs_epu8(offset, all(static_cast<char>(last - first)));
    return _mm_cmpeq_epi8(above, _mm_setzero_si128());
}

/// A bit for each byte, the first one the lowest.
unsigned bitsOf(__m128i bytes) noexcept { return static_cast<unsigned>(_mm_movemask_epi8(bytes)); }

unsigned plainBits(__m128i bytes) noexcept {
    const __m128i letters = isFromTo(_mm_or_si128(bytes, all(0x20)), 'a', 'z');
    const __m128i others = isFromTo(bytes, '&', ';');
    return bitsOf(_mm_or_si128(_mm_or_si128(letters, others), _mm_cmpeq_epi8(bytes, all('_'))));
}

/// Whether a slash stands in front of another one or of a dot, which differ in the last bit.
bool endsName(__m128i bytes) noexcept {
    static_assert(('.' | 1) == '/');
    const unsigned slashes = bitsOf(_mm_cmpeq_epi8(bytes, all('/')));
    const unsigned slashesAndDots = bitsOf(_mm_cmpeq_epi8(_mm_or_si128(bytes, all(1)), all('/')));
    return (slashes << 1 & slashesAndDots) != 0;
}

bool arePlainAt(const char16_t* path) noexcept {
    const __m128i bytes = loadAsBytes(path);
    return plainBits(bytes) == 0xFFFF && !endsName(bytes);
}

}  // namespace

// Each step begins with the last unit of the one before, so that one of them sees each pair. The last step
// goes over more that is done already: that is cheaper than doing the rest one by one.
bool isPlainPath(std::u16string_view path) noexcept {
    if (path.size() < kUnits) {
        return !path.empty() && path[0] == u'/' && arePlainUnits(path.substr(1));
    }
    const std::size_t last = path.size() - kUnits;
    std::size_t at = 0;
    while (arePlainAt(path.data() + at)) {
        if (at == last) {
            return path[0] == u'/' && path.back() != u'/';
        }
        at = std::min(at + kUnits - 1, last);
    }
    return false;
}

}  // namespace foundation::storage::portable
