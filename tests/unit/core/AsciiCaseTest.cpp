#include <pkgcore/core/AsciiCase.hpp>

#include <pkgcore/core/CtypeException.hpp>

#include <gtest/gtest.h>
#include <boost/exception/exception.hpp>

#include <exception>
#include <string>
#include <type_traits>

using foundation::ustring::CtypeExceptionBase;
using foundation::ustring::CtypeInvalidCharacter;
using opc::detail::caselessPrefix;
using opc::detail::lowerASCIIPrefix;
using opc::detail::toLowerASCII;

namespace {

static_assert(std::is_base_of_v<std::exception, CtypeExceptionBase>);
static_assert(std::is_base_of_v<CtypeExceptionBase, CtypeInvalidCharacter>);

TEST(AsciiCase, MapsCapitalLettersAlone) {
    for (char16_t unit = 0; unit < 128; ++unit) {
        const bool capital = unit >= 65 && unit <= 90;
        EXPECT_EQ(toLowerASCII(unit), capital ? unit + 32 : unit) << unit;
    }
}

// What the compiler has computed, once more when the program runs: of a call by a pointer that may change it
// knows nothing.
TEST(AsciiCase, HasTheSameTableAtAnyTime) {
    auto* volatile make = &opc::detail::makeLowerCaseTable;
    EXPECT_EQ(opc::detail::kLowerCaseTable, make());
}

TEST(AsciiCase, RefusesEveryUnitBeyondAscii) {
    for (unsigned unit = 128; unit <= 0xFFFF; ++unit) {
        ASSERT_THROW(toLowerASCII(static_cast<char16_t>(unit)), CtypeInvalidCharacter) << unit;
    }
}

TEST(AsciiCase, ThrowsWhatSaysItsKindAndCanBeCloned) {
    try {
        toLowerASCII(u'\u00E4');
        FAIL() << "nothing thrown";
    } catch (const CtypeExceptionBase& failure) {
        EXPECT_STREQ(failure.what(), "Invalid character error.");
        EXPECT_EQ(failure.kind(), 3);
        EXPECT_NE(dynamic_cast<const boost::exception_detail::clone_base*>(&failure), nullptr);
    }
}

char16_t folded(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
}

TEST(LowerASCIIPrefix, MapsEveryAsciiUnitInEveryLane) {
    for (std::size_t lane = 0; lane < 4; ++lane) {
        for (char16_t unit = 0; unit < 128; ++unit) {
            std::u16string text = u"Az[9";
            text[lane] = unit;
            std::u16string expected = u"az[9";
            expected[lane] = folded(unit);
            ASSERT_EQ(lowerASCIIPrefix(text.data(), text.size()), 4U);
            ASSERT_EQ(text, expected);
        }
    }
}

TEST(LowerASCIIPrefix, StopsBeforeAUnitBeyondAscii) {
    for (const char16_t unit : {u'\x80', u'\xFF', u'\x0141', u'\x4100', u'\xFF41', u'\xFFFF'}) {
        std::u16string text = u"ABCDABCDABCD";
        text[6] = unit;
        EXPECT_EQ(lowerASCIIPrefix(text.data(), text.size()), 4U);
        EXPECT_EQ(text.substr(0, 6), u"abcdAB");
    }
}

bool isCommon(char16_t a, char16_t b) { return a < 128 && b < 128 && folded(a) == folded(b); }

TEST(CaselessPrefix, TellsEveryPairOfAsciiUnitsInEveryLane) {
    for (std::size_t lane = 0; lane < 4; ++lane) {
        for (char16_t left = 0; left < 128; ++left) {
            for (char16_t right = 0; right < 128; ++right) {
                std::u16string a = u"Az[9";
                std::u16string b = a;
                a[lane] = left;
                b[lane] = right;
                ASSERT_EQ(caselessPrefix(a.data(), b.data(), 4), isCommon(left, right) ? 4U : 0U)
                    << static_cast<int>(left) << ' ' << static_cast<int>(right) << " in lane " << lane;
            }
        }
    }
}

TEST(CaselessPrefix, StopsBeforeAUnitBeyondAsciiEvenWhereBothHaveIt) {
    for (const char16_t unit : {u'\x80', u'\xFF', u'\x0141', u'\x4100', u'\xFF41', u'\xFFFF'}) {
        for (std::size_t lane = 0; lane < 4; ++lane) {
            std::u16string text = u"abcdefgh";
            text[4 + lane] = unit;
            EXPECT_EQ(caselessPrefix(text.data(), text.data(), text.size()), 4U) << static_cast<int>(unit);
        }
    }
}

TEST(CaselessPrefix, LeavesATailForTheCaller) {
    const std::u16string text(11, u'a');
    const std::size_t expected[] = {0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8};
    for (std::size_t length = 0; length <= text.size(); ++length) {
        EXPECT_EQ(caselessPrefix(text.data(), text.data(), length), expected[length]);
    }
}

}  // namespace
