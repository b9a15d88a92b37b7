// Text conversions beside the ways that others offer. Peers that return a string are given one of the right
// length.

#include <pkgcore/core/StringConversions.hpp>
#include <pkgcore/portable/i18n/AsciiRun.hpp>

#include "bench/support/Suite.hpp"

#include <emmintrin.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <codecvt>
#include <cstdint>
#include <filesystem>
#include <locale>
#include <random>
#include <string>

namespace {

using bench::Session;
using bench::Suite;

constexpr std::size_t kKiB = 1024;
constexpr std::size_t kMiB = 1024 * kKiB;

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"  // still the standard library's only converter
using StandardConverter = std::wstring_convert<std::codecvt_utf8_utf16<char16_t>, char16_t>;

/// The limit of narrowing: validates and packs sixteen units at a time, and leaves the rest to a loop.
std::size_t narrowByHand(const char16_t* in, std::size_t length, char* out) {
    std::size_t i = 0;
    for (; i + 16 <= length; i += 16) {
        const auto* const units = reinterpret_cast<const __m128i*>(in + i);
        const __m128i first = _mm_loadu_si128(units);
        const __m128i second = _mm_loadu_si128(units + 1);
        const __m128i high =
            _mm_and_si128(_mm_or_si128(first, second), _mm_set1_epi16(static_cast<short>(0xFF80)));
        if (_mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_setzero_si128())) != 0xFFFF) return i;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(first, second));
    }
    for (; i < length && in[i] < 0x80; ++i) out[i] = static_cast<char>(in[i]);
    return i;
}

std::size_t icuEncode(const std::u16string& text, char* out, std::size_t capacity) {
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strToUTF8(out, static_cast<std::int32_t>(capacity), &length, text.data(),
                static_cast<std::int32_t>(text.size()), &error);
    return static_cast<std::size_t>(length);
}

std::size_t icuDecode(const std::string& bytes, char16_t* out, std::size_t capacity) {
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8(out, static_cast<std::int32_t>(capacity), &length, bytes.data(),
                  static_cast<std::int32_t>(bytes.size()), &error);
    return static_cast<std::size_t>(length);
}

std::string icuEncodeToString(const std::u16string& text, std::size_t expectedBytes) {
    std::string out(expectedBytes, '\0');
    icuEncode(text, out.data(), out.size());
    return out;
}

std::u16string icuDecodeToString(const std::string& bytes, std::size_t expectedUnits) {
    std::u16string out(expectedUnits, u'\0');
    icuDecode(bytes, out.data(), out.size());
    return out;
}

std::u16string icuLower(const std::u16string& text) {
    std::u16string out(text.size(), u'\0');
    UErrorCode error = U_ZERO_ERROR;
    u_strToLower(out.data(), static_cast<std::int32_t>(out.size()), text.data(),
                 static_cast<std::int32_t>(text.size()), "", &error);
    return out;
}

std::u16string asciiText(std::size_t length) {
    std::u16string text;
    while (text.size() < length) text += u"/usr/local/share/Documents/Some_Project-2026/Chapter.07";
    text.resize(length);
    return text;
}

/// Text of at most `bytes` bytes in UTF-8 whose characters come from `draw`.
template <typename Draw>
std::u16string randomText(std::size_t bytes, std::size_t bytesOfLargest, Draw draw) {
    std::mt19937 random(20260714);
    std::u16string text;
    for (std::size_t size = 0; size + bytesOfLargest <= bytes;) {
        const auto unit = static_cast<char16_t>(draw(random));
        size += unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
        text.push_back(unit);
    }
    return text;
}

std::u16string latinText(std::size_t bytes) {
    return randomText(bytes, 2, [](auto& random) {
        return random() % 4 == 0 ? 0xC0 + random() % 64 : 'a' + random() % 26;
    });
}

std::u16string cyrillicText(std::size_t bytes) {
    return randomText(bytes, 2, [](auto& random) { return random() % 7 == 0 ? ' ' : 0x410 + random() % 64; });
}

std::u16string cjkText(std::size_t bytes) {
    return randomText(bytes, 3, [](auto& random) { return 0x4E00 + random() % 0x5000; });
}

void benchPathToStack(Session& session, std::size_t length) {
    const std::u16string path = asciiText(length);
    char out[1024];
    Suite suite(session, "ASCII path of " + std::to_string(length) + " units to bytes on the stack");
    const auto timed = [&](auto narrow) {
        return [&, narrow] {
            benchmark::DoNotOptimize(path.data());
            const auto result = narrow();
            benchmark::ClobberMemory();
            return result;
        };
    };
    suite.limit("vectors by hand", timed([&] { return narrowByHand(path.data(), path.size(), out); }));
    suite
        .row("pkgcore",
             timed([&] { return fl::i18n::portable::narrowAsciiRun(path.data(), path.size(), out); }))
        .atMost(1.5);
    suite.row("ICU u_strToUTF8", timed([&] { return icuEncode(path, out, sizeof out); }));
    suite.row("pkgcore toUTF8String", timed([&] { return opc::detail::toUTF8String(path, false); }));
    suite.row("std::filesystem::path", timed([&] { return std::filesystem::path(path); }));
    suite.row("std::wstring_convert", timed([&] { return StandardConverter().to_bytes(path); }));
    suite.run();
}

void benchDecoding(Session& session, const std::string& title, const std::u16string& text, double goal) {
    const std::string bytes = opc::detail::toUTF8String(text, false);
    std::u16string ready(text.size(), u'\0');
    Suite suite(session, title + ", UTF-8 to UTF-16");
    suite.limit("ICU u_strFromUTF8 into a string", [&] { return icuDecodeToString(bytes, text.size()); });
    suite
        .row("pkgcore toStringFromUTF8String",
             [&] { return opc::detail::toStringFromUTF8String(bytes, false); })
        .atMost(goal);
    suite.row("pkgcore, leniently", [&] { return opc::detail::toStringFromUTF8String(bytes, true); })
        .atMost(goal);
    suite.row("ICU u_strFromUTF8 into ready memory",
              [&] { return icuDecode(bytes, ready.data(), ready.size()); });
    suite.row("std::wstring_convert", [&] { return StandardConverter().from_bytes(bytes); });
    suite.run();
}

void benchEncoding(Session& session, const std::string& title, const std::u16string& text, double goal) {
    const std::size_t size = opc::detail::toUTF8String(text, false).size();
    std::string ready(size, '\0');
    Suite suite(session, title + ", UTF-16 to UTF-8");
    suite.limit("ICU u_strToUTF8 into a string", [&] { return icuEncodeToString(text, size); });
    suite.row("pkgcore toUTF8String", [&] { return opc::detail::toUTF8String(text, false); }).atMost(goal);
    suite.row("pkgcore, leniently", [&] { return opc::detail::toUTF8String(text, true); }).atMost(goal);
    suite.row("ICU u_strToUTF8 into ready memory",
              [&] { return icuEncode(text, ready.data(), ready.size()); });
    suite.row("std::filesystem::path", [&] { return std::filesystem::path(text); });
    suite.row("std::wstring_convert", [&] { return StandardConverter().to_bytes(text); });
    suite.run();
}

void benchBothWays(Session& session, const std::string& title, const std::u16string& text, double goal) {
    benchDecoding(session, title, text, goal);
    benchEncoding(session, title, text, goal);
}

void benchLowering(Session& session, std::size_t length) {
    const std::u16string text = asciiText(length);
    std::u16string ready(text.size(), u'\0');
    Suite suite(session, "ASCII of " + std::to_string(length) + " units to lower case");
    suite.limit("ICU u_strToLower into a string", [&] { return icuLower(text); });
    suite.row("pkgcore toLowerString", [&] { return opc::toLowerString(text); }).atMost(0.5);
    suite.row("pkgcore toLowerASCIIString", [&] { return opc::toLowerASCIIString(text); }).atMost(0.5);
    suite.row("vectors into ready memory",
              [&] { return fl::i18n::portable::lowerAsciiRun(text.data(), text.size(), ready.data()); });
    suite.run();
}

void benchComparison(Session& session, std::size_t length) {
    const std::u16string text = asciiText(length);
    const std::u16string other = opc::toLowerString(text);
    Suite suite(session, "Caseless comparison of equal ASCII of " + std::to_string(length) + " units");
    suite.limit("ICU u_strCaseCompare", [&] {
        UErrorCode error = U_ZERO_ERROR;
        return u_strCaseCompare(text.data(), static_cast<std::int32_t>(text.size()), other.data(),
                                static_cast<std::int32_t>(other.size()), U_FOLD_CASE_DEFAULT, &error);
    });
    suite.row("pkgcore caselessCompare", [&] { return opc::caselessCompare(text, other); }).atMost(0.5);
    suite.run();
}

}  // namespace

int main(int argc, char** argv) {
    constexpr double kFiveTimesFaster = 0.2;
    constexpr double kNotSlower = 1.05;  // the noise of two equal rows
    // ICU is given memory of the right size here, which nobody knows beforehand.
    constexpr double kHardlySlower = 1.1;
    Session session(argc, argv);
    benchPathToStack(session, 60);
    benchPathToStack(session, 200);
    benchBothWays(session, "ASCII, 60 B", asciiText(60), kNotSlower);
    benchBothWays(session, "ASCII, 1 MiB", asciiText(kMiB), kFiveTimesFaster);
    benchBothWays(session, "Latin, 4 KiB", latinText(4 * kKiB), kNotSlower);
    benchBothWays(session, "Cyrillic, 4 KiB", cyrillicText(4 * kKiB), kNotSlower);
    benchBothWays(session, "CJK, 4 KiB", cjkText(4 * kKiB), kNotSlower);
    benchBothWays(session, "Latin, 1 MiB", latinText(kMiB), kHardlySlower);
    benchBothWays(session, "CJK, 1 MiB", cjkText(kMiB), kHardlySlower);
    benchLowering(session, 60);
    benchLowering(session, 4096);
    benchComparison(session, 60);
    benchComparison(session, 4096);
    return session.exitCode();
}
