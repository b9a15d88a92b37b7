#include <pkgcore/portable/i18n/AsciiRun.hpp>

#include <pkgcore/portable/i18n/AsciiUnits.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>

using namespace fl::i18n::portable;

namespace {

constexpr std::size_t kMaxLength = 200;
constexpr std::size_t kGuard = 32;

/// ASCII letters, with a NUL now and then.
template <typename Unit>
std::basic_string<Unit> asciiText(std::size_t length) {
    std::basic_string<Unit> text(length, Unit('x'));
    for (std::size_t i = 0; i < length; ++i) text[i] = static_cast<Unit>(i * 37 % 128);
    return text;
}

char16_t lowered(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
}

/// Runs `function` with an output of exactly the length of the text, and looks at what stands around it.
template <typename Out, typename In, typename Function, typename Expected>
void expectRun(Function function, const std::basic_string<In>& text, std::size_t run, Expected expected) {
    const std::basic_string<Out> guard(kGuard, Out{'#'});
    std::basic_string<Out> out = guard + std::basic_string<Out>(text.size(), Out{}) + guard;
    ASSERT_EQ(function(text.data(), text.size(), out.data() + kGuard), run) << "length " << text.size();

    std::basic_string<Out> wanted(run, Out{});
    const auto stranger = text.begin() + static_cast<std::ptrdiff_t>(run);
    std::transform(text.begin(), stranger, wanted.begin(),
                   [&](In unit) { return static_cast<Out>(expected(unit)); });
    ASSERT_EQ(out.compare(kGuard, run, wanted), 0) << "length " << text.size() << ", run " << run;
    ASSERT_EQ(out.compare(0, kGuard, guard), 0) << "before an output of length " << text.size();
    ASSERT_EQ(out.compare(kGuard + text.size(), kGuard, guard), 0)
        << "behind an output of length " << text.size();
}

const auto same = [](auto unit) { return unit; };

/// Each length around the vector steps, with `stranger` at each position, and once without it.
template <typename Out, typename In, typename Function, typename Expected>
void expectRunsAroundEachPosition(Function function, In stranger, Expected expected) {
    for (std::size_t length = 0; length <= kMaxLength; ++length) {
        const std::basic_string<In> ascii = asciiText<In>(length);
        ASSERT_NO_FATAL_FAILURE((expectRun<Out>(function, ascii, length, expected)));
        for (std::size_t position = 0; position < length; ++position) {
            std::basic_string<In> text = ascii;
            text[position] = stranger;
            ASSERT_NO_FATAL_FAILURE((expectRun<Out>(function, text, position, expected)));
        }
    }
}

// The neighbours of ASCII, units with an ASCII byte in either half, and both ends of what is negative as a
// short.
constexpr char16_t kStrangeUnits[] = {0x80,   0xFF,   0x0100, 0x0141, 0x4100, 0x4141,
                                      0x7FFF, 0x8000, 0xD800, 0xFF41, 0xFFFF};
constexpr char kStrangeBytes[] = {'\x80', '\xC3', '\xFF'};

TEST(AsciiRun, NarrowsUpToTheFirstUnitBeyondAscii) {
    for (const char16_t unit : kStrangeUnits) expectRunsAroundEachPosition<char>(narrowAsciiRun, unit, same);
}

TEST(AsciiRun, LowersUpToTheFirstUnitBeyondAscii) {
    for (const char16_t unit : kStrangeUnits)
        expectRunsAroundEachPosition<char16_t>(lowerAsciiRun, unit, lowered);
}

TEST(AsciiRun, CountsUpToTheFirstUnitBeyondAscii) {
    const auto count = [](const char16_t* in, std::size_t length, char16_t*) { return asciiRun(in, length); };
    const auto untouched = [](char16_t) { return u'\0'; };
    for (const char16_t unit : kStrangeUnits) expectRunsAroundEachPosition<char16_t>(count, unit, untouched);
}

TEST(AsciiRun, WidensUpToTheFirstByteBeyondAscii) {
    for (const char byte : kStrangeBytes) expectRunsAroundEachPosition<char16_t>(widenAsciiRun, byte, same);
}

TEST(AsciiRun, EndsAtTheFirstOfSeveralStrangers) {
    std::u16string text = asciiText<char16_t>(40);
    for (std::size_t i = 17; i < text.size(); i += 2) text[i] = u'\xE4';
    expectRun<char>(narrowAsciiRun, text, 17, same);
    expectRun<char16_t>(lowerAsciiRun, text, 17, lowered);
}

TEST(AsciiRun, TakesEveryAsciiCharacterAtEveryPlaceInAVector) {
    for (std::size_t shift = 0; shift < 32; ++shift) {
        std::u16string wide(shift, u'.');
        for (char16_t unit = 0; unit < 0x80; ++unit) wide.push_back(unit);
        const std::string narrow(wide.begin(), wide.end());
        expectRun<char>(narrowAsciiRun, wide, wide.size(), same);
        expectRun<char16_t>(lowerAsciiRun, wide, wide.size(), lowered);
        expectRun<char16_t>(widenAsciiRun, narrow, narrow.size(), same);
    }
}

TEST(AsciiUnits, AgreeWithTheVectors) {
    expectRunsAroundEachPosition<char>(narrowAsciiUnits, char16_t{0x4141}, same);
    expectRunsAroundEachPosition<char16_t>(lowerAsciiUnits, char16_t{0xFF41}, lowered);
    expectRunsAroundEachPosition<char16_t>(widenAsciiUnits, '\x80', same);
}

TEST(FindUnit, FindsTheFirstAtEachPlaceOfEachLength) {
    for (const char16_t unit : {u'/', u'\0', u'\xFF2F'}) {
        for (std::size_t length = 0; length < 40; ++length) {
            std::u16string text(length,
                                u'\u2F00');  // both halves are those of a slash, but not in this order
            EXPECT_EQ(findUnit(text.data(), length, unit), length);
            for (std::size_t at = length; at-- > 0;) {
                text[at] = unit;
                EXPECT_EQ(findUnit(text.data(), length, unit), at) << length;
                EXPECT_EQ(findUnit(text.data(), at, unit), at) << length;
            }
        }
    }
}

TEST(HoldsNul, FindsOneAtEachPlaceOfEachLength) {
    for (std::size_t length = 0; length < 70; ++length) {
        std::u16string text(length, u'\u0100');  // its lower half is a NUL byte, and no NUL
        EXPECT_FALSE(holdsNul(text.data(), length));
        for (std::size_t at = 0; at < length; ++at) {
            text[at] = u'\0';
            EXPECT_TRUE(holdsNul(text.data(), length)) << at << " of " << length;
            EXPECT_FALSE(holdsNul(text.data(), at)) << at << " of " << length;
            text[at] = u'a';
        }
    }
}

}  // namespace
