// What the time conversions ask of the platform, and how they judge a text beside the parser.

#include <pkgcore/core/TimeConversions.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

#include <gtest/gtest.h>

using boost::posix_time::ptime;
using scripted::Calls;

namespace {

const boost::gregorian::date kDay(2021, 3, 4);
const ptime kTime(kDay, boost::posix_time::time_duration(5, 6, 7));
const ptime kOther(kDay, boost::posix_time::time_duration(1, 0, 0));

class TimeConversionsContract : public testing::Test {
protected:
    scripted::Platform platform;

    /// Reads a text that the platform widens as it is.
    ptime read(const std::string& text) {
        platform.to_wstring.forget();
        platform.to_wstring.returns(std::wstring(text.begin(), text.end()));
        return opc::convertStringToTime(scripted::widen(text));
    }
};

TEST_F(TimeConversionsContract, TheCurrentTimeAsksThePlatformForNothing) {
    EXPECT_EQ(opc::getCurrentTime().time_of_day().fractional_seconds(), 0);
    EXPECT_EQ(platform.calls(), Calls{});
}

TEST_F(TimeConversionsContract, LocalTimeIsThatOfTheMachinesZoneEachTime) {
    platform.from_utc.returns(kOther);
    EXPECT_EQ(opc::convertToLocalTime(kTime), kOther);
    EXPECT_EQ(opc::convertToLocalTime(kTime), kOther);
    EXPECT_EQ(platform.calls(), (Calls{"timezone('')", "from_utc(20210304T050607)", "timezone('')",
                                       "from_utc(20210304T050607)"}));
}

TEST_F(TimeConversionsContract, UTCIsCountedFromTheMachinesZoneEachTime) {
    platform.to_utc.returns(kOther);
    EXPECT_EQ(opc::convertToUTCTime(kTime), kOther);
    EXPECT_EQ(platform.calls(), (Calls{"timezone('')", "to_utc(20210304T050607)"}));
}

TEST_F(TimeConversionsContract, FailuresOfTheZonePassUnchanged) {
    platform.from_utc.throws(7);
    platform.to_utc.throws(7);
    EXPECT_THROW(opc::convertToLocalTime(kTime), int);
    EXPECT_THROW(opc::convertToUTCTime(kTime), int);
}

TEST_F(TimeConversionsContract, TextIsConvertedFromWideText) {
    EXPECT_EQ(opc::convertTimeToString(kTime), u"fromWide(2021-03-04T05:06:07Z)");
    EXPECT_EQ(platform.callsTo({"initialize", "to_ustring"}),
              (Calls{"initialize()", "to_ustring('2021-03-04T05:06:07Z')"}));
}

TEST_F(TimeConversionsContract, FractionsOfSecondsAreDropped) {
    const ptime nearlyEight(kDay, boost::posix_time::time_duration(5, 6, 7, 999999));
    EXPECT_EQ(opc::convertTimeToString(nearlyEight), u"fromWide(2021-03-04T05:06:07Z)");
}

TEST_F(TimeConversionsContract, SpecialTimesHaveNoTextButInitialize) {
    for (const auto special :
         {boost::posix_time::not_a_date_time, boost::posix_time::pos_infin, boost::posix_time::neg_infin}) {
        EXPECT_EQ(opc::convertTimeToString(ptime(special)), u"");
    }
    EXPECT_EQ(platform.callsTo({"initialize", "to_ustring"}),
              (Calls{"initialize()", "initialize()", "initialize()"}));
}

TEST_F(TimeConversionsContract, ATextIsReadFromItsWideForm) {
    EXPECT_EQ(read("2021-03-04T05:06:07Z"), kTime);
    EXPECT_EQ(platform.callsTo({"initialize", "to_wstring"}),
              (Calls{"initialize()", "to_wstring('2021-03-04T05:06:07Z')"}));
}

TEST_F(TimeConversionsContract, ATextIsJudgedByItsOwnUnitsAndNotByItsWideForm) {
    platform.to_wstring.returns(std::wstring(L"2021-03-04T05:06:07Z"));
    EXPECT_EQ(opc::convertStringToTime(u"2021-03-04T05:06:0"), ptime(boost::posix_time::not_a_date_time));
    EXPECT_EQ(opc::convertStringToTime(u"2021-03-04 05:06:07Z"), ptime(boost::posix_time::not_a_date_time));
    EXPECT_EQ(opc::convertStringToTime(u"2021-03-04T05:06:07"), kTime);
    EXPECT_EQ(opc::convertStringToTime(u"short"), kTime);
    EXPECT_EQ(opc::convertStringToTime(u"elevenunits"), kTime);
}

TEST_F(TimeConversionsContract, ATextWithSomethingBehindTheTimeIsNone) {
    EXPECT_TRUE(read("2021-03-04T05:06:07Z ").is_not_a_date_time());
    EXPECT_TRUE(read("2021-03-04T05:06:07Zx").is_not_a_date_time());
    EXPECT_TRUE(read("").is_not_a_date_time());
    EXPECT_TRUE(read("no time at all, but long").is_not_a_date_time());
}

TEST_F(TimeConversionsContract, TheLocaleOfTheProcessIsAskedForOnceInEachDirection) {
    for (int i = 0; i < 3; ++i) {
        opc::convertTimeToString(kTime);
        read("2021-03-04T05:06:07Z");
    }
    // Only where no other test of this program has come first, as under CTest, is the first use seen here.
    const bool isFirst = testing::UnitTest::GetInstance()->test_to_run_count() == 1;
    EXPECT_EQ(platform.callsTo({"get_global_std_locale"}).size(), isFirst ? 2u : 0u);
}

}  // namespace
