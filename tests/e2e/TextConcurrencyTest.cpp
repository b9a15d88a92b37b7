// Conversions of text in many threads, begun at once: CTest gives this test a process of its own, so that
// whatever is made at the first use is made while others come.

#include <pkgcore/pkgcore.hpp>

#include "tests/support/ManyThreads.hpp"

#include <gtest/gtest.h>

#include <atomic>

namespace opc {
namespace {

TEST(TextConcurrency, ConversionsAgreeInAllThreadsFromTheFirstUseOn) {
    const ustring text = u"\u00C4 \u65E5\u672C";
    std::atomic<int> wrong{0};
    test::inManyThreads([&] {
        for (int round = 0; round < 200; ++round) {
            wrong += detail::toStringFromUTF8String(detail::toUTF8String(text, false), false) != text;
            wrong += toString(toWideString(text)) != text;
            wrong += toLowerString(text) != u"\u00E4 \u65E5\u672C";
            wrong += toLowerASCIIString(u"ABC") != u"abc";
            wrong += toASCIIString(u"abc") != "abc";
            wrong += toStringFromASCIIStringLiteral("abc") != u"abc";
            wrong += toString("abc", false) != u"abc";
            wrong += toUDEString(u"abc") != "abc";
            wrong += caselessCompare(u"ABC", u"abc") != 0;
            wrong += !hasWhitespace(text);
        }
    });
    EXPECT_EQ(wrong, 0);
}

/// The text of the failure to convert, or an empty one if it does not fail.
std::string failureOf(const ustring& text) {
    try {
        detail::toUTF8String(text, false);
    } catch (const Exception& failure) {
        return failure.what();
    }
    return std::string();
}

TEST(TextConcurrency, FailuresStayInTheirThread) {
    const ustring unpaired = u"text \xD800";
    const std::string expected = failureOf(unpaired);
    ASSERT_FALSE(expected.empty());
    std::atomic<int> wrong{0};
    test::inManyThreads([&](int number) {
        for (int round = 0; round < 200; ++round) {
            const bool fails = (number + round) % 2 == 0;
            wrong += failureOf(fails ? unpaired : u"text") != (fails ? expected : std::string());
        }
    });
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace opc
