// Conversions of text and times from many threads, begun at once: CTest gives each of these tests a process
// of its own, so that whatever is made at the first use is made while others come.

#include <pkgcore/core/StringConversions.hpp>
#include <pkgcore/core/TimeConversions.hpp>

#include "tests/support/InManyThreads.hpp"

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <atomic>

namespace opc {
namespace {

using boost::posix_time::ptime;

constexpr int kRounds = 200;

TEST(ConcurrentConversions, OfTextAgreeInAllThreads) {
    const ustring text = u"\u00C4 \u65E5\u672C";
    std::atomic<int> wrong{0};
    test::inManyThreads([&](int /*number*/) {
        for (int round = 0; round < kRounds; ++round) {
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

TEST(ConcurrentConversions, OfTimesToTextAgreeInAllThreads) {
    const ustring text = u"2024-02-29T12:34:56Z";
    const ptime time(boost::gregorian::date(2024, 2, 29), boost::posix_time::time_duration(12, 34, 56));
    std::atomic<int> wrong{0};
    test::inManyThreads([&](int number) {
        for (int round = 0; round < kRounds; ++round) {
            // Both begin in some thread, so that either facet is made first.
            wrong += number % 2 == 0 && convertTimeToString(time) != text;
            wrong += convertStringToTime(text) != time;
            wrong += convertTimeToString(time) != text;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST(ConcurrentConversions, ToLocalTimeAndBackAgreeInAllThreads) {
    const ptime summer(boost::gregorian::date(2024, 7, 1), boost::posix_time::time_duration(12, 0, 0));
    std::atomic<int> wrong{0};
    test::inManyThreads([&](int /*number*/) {
        for (int round = 0; round < kRounds; ++round) {
            wrong += convertToUTCTime(convertToLocalTime(summer)) != summer;
            wrong += getCurrentTime().is_special();
        }
    });
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace opc
