// Every short text through every conversion, beside ICU. The sweeps go in steps; PKGCORE_TEXT_STEP=1 leaves
// nothing out.

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/core/StringConversions.hpp>

#include "tests/reference/IcuUtf8.hpp"

#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

using opc::detail::toStringFromUTF8String;
using opc::detail::toUTF8String;

/// What stands between two texts that must not know of each other.
constexpr char kFence = 'a';

/// Odd, so that all residues of the lower bits are met.
std::uint32_t step(std::uint32_t usual) {
    const char* const wanted = std::getenv("PKGCORE_TEXT_STEP");
    return wanted != nullptr ? static_cast<std::uint32_t>(std::strtoul(wanted, nullptr, 10)) : usual;
}

char byteAt(std::uint32_t bytes, unsigned place) { return static_cast<char>(bytes >> (8 * place) & 0xFFU); }

template <typename Work>
bool fails(Work work) {
    try {
        work();
        return false;
    } catch (const opc::Exception& failure) {
        EXPECT_FALSE(failure.code());
        return true;
    }
}

bool icuRefuses(const std::string& bytes) {
    char16_t out[8];
    UErrorCode error = U_ZERO_ERROR;
    u_strFromUTF8(out, 8, nullptr, bytes.data(), static_cast<std::int32_t>(bytes.size()), &error);
    return U_FAILURE(error);
}

bool icuRefuses(const std::u16string& text) {
    char out[16];
    UErrorCode error = U_ZERO_ERROR;
    u_strToUTF8(out, 16, nullptr, text.data(), static_cast<std::int32_t>(text.size()), &error);
    return U_FAILURE(error);
}

void expectLenientAsIcu(const std::string& bytes) {
    ASSERT_TRUE(toStringFromUTF8String(bytes, true) == reference::icuDecodeUtf8(bytes));
}

TEST(EveryText, OfThreeBytesBecomesWhatIcuMakesOfIt) {
    for (std::uint32_t first = 0; first <= 0xFF; ++first) {
        std::string all;
        for (std::uint32_t rest = 0; rest <= 0xFFFF; ++rest) {
            all += {static_cast<char>(first), byteAt(rest, 1), byteAt(rest, 0), kFence};
        }
        ASSERT_NO_FATAL_FAILURE(expectLenientAsIcu(all)) << "first byte " << first;
    }
}

TEST(EveryText, OfFourBytesWithALeadBecomesWhatIcuMakesOfIt) {
    const std::string lasts("\x00\x41\x7F\x80\x8F\xBF\xC0\xF0\xFF", 9);
    for (std::uint32_t first = 0xE0; first <= 0xFF; ++first) {
        std::string all;
        for (std::uint32_t middle = 0; middle <= 0xFFFF; ++middle) {
            for (const char last : lasts) {
                all += {static_cast<char>(first), byteAt(middle, 1), byteAt(middle, 0), last, kFence};
            }
        }
        ASSERT_NO_FATAL_FAILURE(expectLenientAsIcu(all)) << "first byte " << first;
    }
}

TEST(EveryText, OfThreeBytesAloneIsRefusedWhereIcuRefusesIt) {
    const std::uint32_t kStep = step(251);
    for (std::uint32_t bytes = 0; bytes <= 0xFFFFFF; bytes += kStep) {
        const std::string text{byteAt(bytes, 2), byteAt(bytes, 1), byteAt(bytes, 0)};
        ASSERT_EQ(fails([&] { toStringFromUTF8String(text, false); }), icuRefuses(text)) << bytes;
        ASSERT_NO_FATAL_FAILURE(expectLenientAsIcu(text)) << bytes;
    }
}

TEST(EveryText, OfTwoUnitsBecomesWhatIcuMakesOfIt) {
    const std::uint32_t kStep = step(509);
    for (std::uint32_t first = 0; first <= 0xFFFF; first += kStep) {
        std::u16string all;
        for (std::uint32_t second = 0; second <= 0xFFFF; ++second) {
            all += {static_cast<char16_t>(first), static_cast<char16_t>(second), kFence};
        }
        ASSERT_TRUE(toUTF8String(all, true) == reference::icuEncodeUtf8(all)) << "first unit " << first;
        ASSERT_TRUE(opc::toString(opc::toWideString(all)) == all) << "first unit " << first;
    }
}

// Units that are no surrogates are the same to all of this; a few of them stand for the rest.
TEST(EveryText, OfTwoUnitsAloneIsRefusedWhereIcuRefusesIt) {
    const std::uint32_t kStep = step(1021);
    for (std::uint32_t first = 0xD7F0; first <= 0xE010; ++first) {
        for (std::uint32_t second = first % kStep; second <= 0xFFFF; second += kStep) {
            const std::u16string text{static_cast<char16_t>(first), static_cast<char16_t>(second)};
            ASSERT_EQ(fails([&] { toUTF8String(text, false); }), icuRefuses(text)) << first << ' ' << second;
        }
    }
}

std::u16string textOf(UChar32 value) {
    char16_t units[2];
    std::size_t length = 0;
    U16_APPEND_UNSAFE(units, length, value);
    return {units, length};
}

std::u16string icuLowered(const std::u16string& text) {
    char16_t out[16];
    UErrorCode error = U_ZERO_ERROR;
    const std::int32_t length =
        u_strToLower(out, 16, text.data(), static_cast<std::int32_t>(text.size()), "", &error);
    EXPECT_TRUE(U_SUCCESS(error));
    return {out, static_cast<std::size_t>(length)};
}

void expectConvertsAndComesBack(const std::u16string& text) {
    const std::string bytes = toUTF8String(text, false);
    ASSERT_EQ(bytes, reference::icuEncodeUtf8(text));
    ASSERT_EQ(toStringFromUTF8String(bytes, false), text);
    ASSERT_EQ(opc::toString(opc::toWideString(text)), text);
}

TEST(EveryText, OfOneCharacterConvertsAndComesBack) {
    for (UChar32 value = 0; value <= 0x10FFFF; ++value) {
        if (value >= 0xD800 && value <= 0xDFFF) continue;
        ASSERT_NO_FATAL_FAILURE(expectConvertsAndComesBack(textOf(value))) << "U+" << std::hex << value;
    }
}

TEST(EveryText, OfOneCharacterHasTheSmallLettersAndTheSpacesThatIcuKnows) {
    for (UChar32 value = 0; value <= 0x10FFFF; ++value) {
        const std::u16string text = textOf(value);
        ASSERT_EQ(opc::toLowerString(text), icuLowered(text)) << "U+" << std::hex << value;
        ASSERT_EQ(opc::toLowerString(u"A" + text), icuLowered(u"A" + text)) << "U+" << std::hex << value;
        ASSERT_EQ(opc::hasWhitespace(text), u_isUWhiteSpace(value) != 0) << "U+" << std::hex << value;
    }
}

TEST(EveryText, OfOneUnitIsAsciiOrRefused) {
    for (char16_t unit = 0; unit < 0xFFFF; ++unit) {
        const std::u16string text(1, unit);
        ASSERT_EQ(fails([&] { opc::toASCIIString(text); }), unit > 0x7F) << unit;
        ASSERT_EQ(fails([&] { opc::toLowerASCIIString(text); }), unit > 0x7F) << unit;
        ASSERT_EQ(fails([&] { opc::caselessCompare(text, u"a"); }), unit > 0x7F) << unit;
    }
}

}  // namespace
