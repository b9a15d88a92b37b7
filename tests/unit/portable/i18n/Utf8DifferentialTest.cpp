#include <pkgcore/portable/i18n/Utf8.hpp>

#include <pkgcore/platform/i18n/CvtException.hpp>

#include "tests/reference/IcuUtf8.hpp"
#include "tests/reference/ReferenceUtf8.hpp"
#include "tests/unit/portable/i18n/Shown.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

using fl::i18n::CvtInvalidSequence;

namespace {

std::u16string decode(const std::string& bytes, bool lenient) {
    return fl::i18n::portable::decodeUtf8(bytes.data(), bytes.size(), lenient);
}

std::string encode(const std::u16string& text, bool lenient) {
    return fl::i18n::portable::encodeUtf8(text.data(), text.size(), lenient);
}

template <typename Work>
bool throwsInvalidSequence(Work work) {
    try {
        work();
        return false;
    } catch (const CvtInvalidSequence&) {
        return true;
    }
}

void expectDecodesLikeTheOthers(const std::string& bytes) {
    const reference::Decoded expected = reference::decodeUtf8(bytes);
    ASSERT_EQ(decode(bytes, true), expected.text) << test::hex(bytes);
    ASSERT_EQ(reference::icuDecodeUtf8(bytes), expected.text) << test::hex(bytes);
    if (expected.malformed == 0) {
        ASSERT_EQ(decode(bytes, false), expected.text) << test::hex(bytes);
    } else {
        ASSERT_TRUE(throwsInvalidSequence([&] { decode(bytes, false); })) << test::hex(bytes);
    }
}

void expectEncodesLikeTheOthers(const std::u16string& text) {
    const reference::Encoded expected = reference::encodeUtf8(text);
    ASSERT_EQ(encode(text, true), expected.bytes) << test::hex(text);
    ASSERT_EQ(reference::icuEncodeUtf8(text), expected.bytes) << test::hex(text);
    if (expected.unpaired == 0) {
        ASSERT_EQ(encode(text, false), expected.bytes) << test::hex(text);
    } else {
        ASSERT_TRUE(throwsInvalidSequence([&] { encode(text, false); })) << test::hex(text);
    }
}

class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}

    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(engine_);
    }

    /// Bytes of which many begin, continue or all but complete a character.
    std::string bytes(std::size_t length) {
        static const std::string kEdges(
            "\x00\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xC3\xDF\xE0\xE1\xE4\xEC\xED\xEE"
            "\xEF\xF0\xF1\xF3\xF4\xF5\xFE\xFF",
            28);
        std::string text;
        while (text.size() < length) {
            text.push_back(below(4) == 0 ? static_cast<char>(below(256)) : kEdges[below(kEdges.size())]);
        }
        return text;
    }

    char32_t scalar() {
        static constexpr char32_t kLimits[] = {0x80, 0x800, 0x10000, 0x110000};
        const auto value = static_cast<char32_t>(below(kLimits[below(4)]));
        return value >= 0xD800 && value <= 0xDFFF ? value - 0x800 : value;
    }

    std::u16string text(std::size_t length) {
        std::u16string text;
        while (text.size() < length) reference::appendUtf16(text, scalar());
        return text;
    }

    std::u16string units(std::size_t length) {
        std::u16string text;
        while (text.size() < length) {
            const bool surrogate = below(2) == 0;
            text.push_back(static_cast<char16_t>(surrogate ? 0xD800 + below(0x800) : below(0x10000)));
        }
        return text;
    }

private:
    std::mt19937 engine_;
};

TEST(Utf8Differential, EveryScalarValueConvertsAsTheStandardSaysAndBack) {
    for (char32_t value = 0; value <= 0x10FFFF; ++value) {
        if (value >= 0xD800 && value <= 0xDFFF) continue;
        std::u16string text;
        reference::appendUtf16(text, value);
        std::string bytes;
        reference::appendUtf8(bytes, value);
        ASSERT_EQ(decode(bytes, false), text) << "U+" << std::hex << static_cast<std::uint32_t>(value);
        ASSERT_EQ(encode(text, false), bytes) << "U+" << std::hex << static_cast<std::uint32_t>(value);
        ASSERT_EQ(reference::icuDecodeUtf8(bytes), text);
    }
}

TEST(Utf8Differential, EveryPairOfLeadAndNextByteDecodesAsTheStandardSays) {
    for (unsigned first = 0x80; first <= 0xFF; ++first) {
        for (unsigned second = 0; second <= 0xFF; ++second) {
            const std::string pair{static_cast<char>(first), static_cast<char>(second)};
            for (const char* rest : {"", "\x80", "\x80\x80", "\xBF\xBF", "a", "\x80z"}) {
                ASSERT_NO_FATAL_FAILURE(expectDecodesLikeTheOthers(pair + rest));
            }
        }
    }
}

TEST(Utf8Differential, RandomBytesDecodeAsTheStandardSays) {
    Random random(20240601);
    for (int i = 0; i < 100'000; ++i) {
        ASSERT_NO_FATAL_FAILURE(expectDecodesLikeTheOthers(random.bytes(random.below(40))));
    }
}

TEST(Utf8Differential, RandomCodeUnitsEncodeAsTheStandardSays) {
    Random random(20240602);
    for (int i = 0; i < 100'000; ++i) {
        ASSERT_NO_FATAL_FAILURE(expectEncodesLikeTheOthers(random.units(random.below(40))));
    }
}

TEST(Utf8Differential, LongRandomBytesDecodeAsTheStandardSays) {
    Random random(20240603);
    for (int i = 0; i < 60; ++i) {
        const std::string ascii(random.below(5000), 'a');
        ASSERT_NO_FATAL_FAILURE(
            expectDecodesLikeTheOthers(ascii + random.bytes(20'000 + random.below(3000)) + ascii));
    }
}

TEST(Utf8Differential, LongRandomCodeUnitsEncodeAsTheStandardSays) {
    Random random(20240604);
    for (int i = 0; i < 60; ++i) {
        const std::u16string ascii(random.below(5000), u'a');
        ASSERT_NO_FATAL_FAILURE(
            expectEncodesLikeTheOthers(ascii + random.units(20'000 + random.below(3000)) + ascii));
    }
}

TEST(Utf8Differential, LongRandomTextConvertsBothWays) {
    Random random(20240605);
    for (int i = 0; i < 100; ++i) {
        const std::u16string text = random.text(random.below(40'000));
        ASSERT_NO_FATAL_FAILURE(expectEncodesLikeTheOthers(text));
        ASSERT_EQ(decode(encode(text, false), false), text);
    }
}

// Pieces and buffers have sizes that are powers of two: no character may be lost where one ends.
TEST(Utf8Differential, ACharacterMayStandAcrossAnyOffset) {
    const std::string characters[] = {"\xC3\xA4", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80",
                                      "\xE4\xB8", "\xF0\x9F\x98", "\x80"};
    for (const std::string& character : characters) {
        std::string run;
        while (run.size() < 10'000) run += character;
        for (std::size_t shift = 0; shift <= 40; ++shift) {
            const std::string bytes = std::string(shift, 'a') + run + std::string(300, 'z') + run;
            ASSERT_NO_FATAL_FAILURE(expectDecodesLikeTheOthers(bytes));
            ASSERT_NO_FATAL_FAILURE(expectEncodesLikeTheOthers(reference::decodeUtf8(bytes).text));
        }
    }
}

}  // namespace
