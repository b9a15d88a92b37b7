// Texts that are nearly times, beside a reader that goes by the documented rules.

#include <pkgcore/core/TimeConversions.hpp>

#include "tests/reference/TimeTextReader.hpp"

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time.hpp>

#include <optional>
#include <random>
#include <string>

using boost::posix_time::ptime;

namespace {

class TimeTextDifferential : public testing::Test {
protected:
    std::size_t below(std::size_t count) { return random_() % count; }

    /// Digits mostly, and what the rules or the C library might take for something else. No letters of the
    /// special times' names.
    std::u16string anyCharacter() {
        static const std::u16string kOthers[] = {u"T",      u"Z",      u"-",          u":",     u" ",
                                                 u"\t",     u"t",      u".",          u"/",     u"x",
                                                 u"\xFF12", u"\x0662", u"\U0001F600", u"\xD800"};
        static const std::u16string kNul(1, u'\0');
        if (below(8) == 0) return kNul;
        if (below(2) == 0) return std::u16string(1, static_cast<char16_t>(u'0' + below(10)));
        return kOthers[below(std::size(kOthers))];
    }

    std::u16string change(std::u16string text) {
        const std::size_t at = below(text.size() + 1);
        switch (below(4)) {
            case 0:
                return text.insert(at, anyCharacter());
            case 1:
                return text.erase(at, 1);
            case 2:
                return text.replace(at, 1, anyCharacter());
            default:
                return below(4) == 0 ? text.substr(0, at) : text;
        }
    }

    std::u16string nearlyATime() {
        static const std::u16string kTexts[] = {u"2021-03-04T05:06:07Z", u"1400-01-01T00:00:00Z",
                                                u"9999-12-31T23:59:59Z", u"2021- 3-04T05:06:07Z",
                                                u" 2021-3-04T05:06:07Z", u"2020-02-29T24:60:99Z",
                                                u"2021-03-04",           u"2021-3-04T"};
        std::u16string text = kTexts[below(std::size(kTexts))];
        for (std::size_t changes = below(5); changes > 0; --changes) text = change(text);
        return text;
    }

private:
    std::mt19937_64 random_{17};
};

TEST_F(TimeTextDifferential, TextsThatAreNearlyTimesAreReadByTheRules) {
    int times = 0;
    for (int i = 0; i < 200'000; ++i) {
        const std::u16string text = nearlyATime();
        const std::optional<reference::Seconds> expected = reference::TimeTextReader(text).read();
        const ptime time = opc::convertStringToTime(text);
        ASSERT_EQ(time.is_not_a_date_time(), !expected) << testing::PrintToString(text) << ' ' << time;
        if (!expected) continue;
        ++times;
        const ptime epoch(boost::gregorian::date(1970, 1, 1));
        ASSERT_EQ(time, epoch + boost::posix_time::seconds(*expected)) << testing::PrintToString(text);
    }
    EXPECT_GT(times, 20'000);  // both kinds were seen
    EXPECT_LT(times, 180'000);
}

}  // namespace
