#include <pkgcore/portable/i18n/CodePoints.hpp>

#include <gtest/gtest.h>

#include <string>

using fl::i18n::portable::nextCodePoint;

namespace {

TEST(NextCodePoint, TakesPairsAndLeavesUnpairedSurrogatesAsTheyAre) {
    const std::u16string text = u"a\U0001F600\xDC00\xD800z\xD800";
    const char32_t expected[] = {U'a', U'\U0001F600', 0xDC00, 0xD800, U'z', 0xD800};
    std::size_t position = 0;
    for (const char32_t codePoint : expected) {
        EXPECT_EQ(nextCodePoint(text.data(), position, text.size()), codePoint);
    }
    EXPECT_EQ(position, text.size());
}

TEST(NextCodePoint, LooksAtNothingBehindTheEnd) {
    const std::u16string text = u"\U0001F600";
    std::size_t position = 0;
    EXPECT_EQ(nextCodePoint(text.data(), position, 1), char32_t{0xD83D});
    EXPECT_EQ(position, 1U);
}

}  // namespace
