#include <pkgcore/portable/storage/iri/PlainPath.hpp>

#include <emmintrin.h>

#include <algorithm>
#include <cstddef>

namespace foundation::storage::portable {

namespace {

constexpr std::size_t kUnits = 8;  // UTF-16 code units in a vector

__m128i load(const char16_t* units) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
}

__m128i all(char16_t unit) noexcept { return _mm_set1_epi16(static_cast<short>(unit)); }

/// Unsigned comparison: what is left above the length of the range is 0 within it.
__m128i isFromTo(__m128i units, char16_t first, char16_t last) noexcept {
    const __m128i offset = _mm_sub_epi16(units, all(first));
    const __m128i above = _mm_subs_epu16(offset, all(static_cast<char16_t>(last - first)));
    return _mm_cmpeq_epi16(above, _mm_setzero_si128());
}

__m128i arePlain(__m128i units) noexcept {
    const __m128i letters = isFromTo(_mm_or_si128(units, all(0x20)), u'a', u'z');
    const __m128i others = isFromTo(units, u'&', u';');
    return _mm_or_si128(_mm_or_si128(letters, others), _mm_cmpeq_epi16(units, all(u'_')));
}

/// A slash in front of another one or of a dot, which differ in the last bit.
__m128i endNames(__m128i units, __m128i next) noexcept {
    static_assert((u'.' | 1) == u'/');
    const __m128i slash = all(u'/');
    return _mm_and_si128(_mm_cmpeq_epi16(units, slash), _mm_cmpeq_epi16(_mm_or_si128(next, all(1)), slash));
}

/// Of eight units, with the one behind them.
bool arePlainAt(const char16_t* path) noexcept {
    const __m128i units = load(path);
    const __m128i plain = _mm_andnot_si128(endNames(units, load(path + 1)), arePlain(units));
    return _mm_movemask_epi8(plain) == 0xFFFF;
}

}  // namespace

// The last step goes over units that are done already: that is cheaper than doing the rest one by one.
bool isPlainPath(std::u16string_view path) noexcept {
    if (path.size() <= kUnits) {
        return !path.empty() && path[0] == u'/' && arePlainUnits(path.substr(1));
    }
    const std::size_t last = path.size() - kUnits - 1;
    std::size_t at = 0;
    while (arePlainAt(path.data() + at)) {
        if (at == last) {
            return path[0] == u'/' && path.back() != u'/' && isPlainUnit(path.back());
        }
        at = std::min(at + kUnits, last);
    }
    return false;
}

}  // namespace foundation::storage::portable
