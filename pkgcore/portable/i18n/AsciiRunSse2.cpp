#include <pkgcore/portable/i18n/AsciiRun.hpp>

#include <pkgcore/portable/i18n/AsciiUnits.hpp>

#include <emmintrin.h>

namespace fl::i18n::portable {
namespace {

constexpr std::size_t kUnits = 8;   // UTF-16 code units in a vector
constexpr std::size_t kBytes = 16;  // bytes in a vector

template <typename Unit>
__m128i load(const Unit* in) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
}

template <typename Unit>
void store(Unit* out, __m128i vector) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), vector);
}

/// Two bits per code unit, set where the unit is beyond ASCII.
unsigned nonAsciiUnits(__m128i units) noexcept {
    const __m128i high = _mm_and_si128(units, _mm_set1_epi16(static_cast<short>(0xFF80)));
    return 0xFFFFU ^ static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_setzero_si128())));
}

/// The number of ASCII units that a step found before the first other one.
constexpr std::size_t kNoStop = ~std::size_t{0};

std::size_t firstUnit(unsigned mask) noexcept {
    return mask == 0 ? kNoStop : static_cast<std::size_t>(__builtin_ctz(mask)) / 2;
}

/// Writes nothing; what stands for the output is the input.
struct CountStep {
    static constexpr std::size_t kWidth = kUnits;
    static std::size_t take(const char16_t* in, const char16_t*) noexcept {
        return firstUnit(nonAsciiUnits(load(in)));
    }
};

/// Saturation turns units beyond ASCII into anything; they are not counted.
struct NarrowStep {
    static constexpr std::size_t kWidth = kUnits;
    static std::size_t take(const char16_t* in, char* out) noexcept {
        const __m128i units = load(in);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(units, units));
        return firstUnit(nonAsciiUnits(units));
    }
};

struct WidenStep {
    static constexpr std::size_t kWidth = kBytes;
    static std::size_t take(const char* in, char16_t* out) noexcept {
        const __m128i bytes = load(in);
        store(out, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
        store(out + kUnits, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
        const auto high = static_cast<unsigned>(_mm_movemask_epi8(bytes));
        return high == 0 ? kNoStop : static_cast<std::size_t>(__builtin_ctz(high));
    }
};

/// Sets bit 5 of the units from A to Z. Units from 0x8000 compare as negative numbers, and so are left alone.
struct LowerStep {
    static constexpr std::size_t kWidth = kUnits;
    static std::size_t take(const char16_t* in, char16_t* out) noexcept {
        const __m128i units = load(in);
        const __m128i fromA = _mm_cmpgt_epi16(units, _mm_set1_epi16(u'A' - 1));
        const __m128i toZ = _mm_cmplt_epi16(units, _mm_set1_epi16(u'Z' + 1));
        const __m128i bit = _mm_and_si128(_mm_and_si128(fromA, toZ), _mm_set1_epi16(0x20));
        store(out, _mm_or_si128(units, bit));
        return firstUnit(nonAsciiUnits(units));
    }
};

/// Steps over a text of at least one width. The last step ends at the end of the text, over units that are
/// done already: doing a few of them twice is cheaper than doing the rest one by one.
template <typename Step, typename In, typename Out>
std::size_t run(const In* in, std::size_t start, std::size_t length, Out* out) noexcept {
    for (std::size_t i = start; i + Step::kWidth < length; i += Step::kWidth) {
        const std::size_t stop = Step::take(in + i, out + i);
        if (stop != kNoStop) return i + stop;
    }
    const std::size_t last = length - Step::kWidth;
    const std::size_t stop = Step::take(in + last, out + last);
    return stop == kNoStop ? length : last + stop;
}

/// Narrows two vectors at a time while all is ASCII: half the stores and half the tests. Stops where it is
/// not.
std::size_t narrowPairs(const char16_t* in, std::size_t length, char* out) noexcept {
    std::size_t i = 0;
    for (; i + 2 * kUnits <= length; i += 2 * kUnits) {
        const __m128i first = load(in + i);
        const __m128i second = load(in + i + kUnits);
        if (nonAsciiUnits(_mm_or_si128(first, second)) != 0) break;
        store(out + i, _mm_packus_epi16(first, second));
    }
    return i;
}

}  // namespace

std::size_t asciiRun(const char16_t* in, std::size_t length) noexcept {
    return length < kUnits ? asciiUnits(in, length) : run<CountStep>(in, 0, length, in);
}

std::size_t narrowAsciiRun(const char16_t* in, std::size_t length, char* out) noexcept {
    if (length < kUnits) return narrowAsciiUnits(in, length, out);
    return run<NarrowStep>(in, narrowPairs(in, length, out), length, out);
}

std::size_t widenAsciiRun(const char* in, std::size_t length, char16_t* out) noexcept {
    if (length < kBytes) return widenAsciiUnits(in, length, out);
    return run<WidenStep>(in, 0, length, out);
}

std::size_t lowerAsciiRun(const char16_t* in, std::size_t length, char16_t* out) noexcept {
    if (length < kUnits) return lowerAsciiUnits(in, length, out);
    return run<LowerStep>(in, 0, length, out);
}

std::size_t findUnit(const char16_t* in, std::size_t length, char16_t unit) noexcept {
    if (length < kUnits) return findOneByOne(in, length, unit);
    const __m128i wanted = _mm_set1_epi16(static_cast<short>(unit));
    const auto find = [&](std::size_t at) {
        return firstUnit(static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(load(in + at), wanted))));
    };
    for (std::size_t i = 0; i + kUnits < length; i += kUnits) {
        const std::size_t found = find(i);
        if (found != kNoStop) return i + found;
    }
    const std::size_t last = length - kUnits;
    const std::size_t found = find(last);
    return found == kNoStop ? length : last + found;
}

bool holdsNul(const char16_t* in, std::size_t length) noexcept {
    if (length < kUnits) return holdsNulUnit(in, length);
    const __m128i nul = _mm_setzero_si128();
    __m128i found = _mm_cmpeq_epi16(load(in + length - kUnits), nul);
    for (std::size_t i = 0; i + kUnits < length; i += kUnits) {
        found = _mm_or_si128(found, _mm_cmpeq_epi16(load(in + i), nul));
    }
    return _mm_movemask_epi8(found) != 0;
}

}  // namespace fl::i18n::portable
