// Which converter each string conversion uses, under which name and flag, and how it reports a failure.

#include <pkgcore/core/StringConversions.hpp>

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/platform/i18n/CvtException.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

#include <gtest/gtest.h>

#include <functional>

using fl::i18n::CvtInvalidSequence;
using scripted::Calls;
using scripted::Platform;

namespace {

class StringConversionsContract : public testing::Test {
protected:
    Platform platform;
};

TEST_F(StringConversionsContract, FromTheDefaultEncoding) {
    EXPECT_EQ(opc::toString(std::string("a"), true), u"decoded(a)");
    EXPECT_EQ(platform.calls(),
              (Calls{"initialize()", "codecvt_string_to_ustring('', true)",
                     "to_ustring('a', converter['', true])", "~codecvt_string_to_ustring()"}));
}

TEST_F(StringConversionsContract, FromUTF8) {
    EXPECT_EQ(opc::detail::toStringFromUTF8String("a", true), u"decoded(a)");
    EXPECT_EQ(platform.calls(),
              (Calls{"initialize()", "codecvt_string_to_ustring('UTF-8', true)",
                     "to_ustring('a', converter['UTF-8', true])", "~codecvt_string_to_ustring()"}));
}

TEST_F(StringConversionsContract, IntoUTF8) {
    EXPECT_EQ(opc::detail::toUTF8String(u"a", true), "lenient(a)");
    EXPECT_EQ(platform.calls(),
              (Calls{"initialize()", "codecvt_ustring_to_string('UTF-8', true)",
                     "to_string('a', converter['UTF-8', true])", "~codecvt_ustring_to_string()"}));
}

TEST_F(StringConversionsContract, TheFlagIsPassedAsItIs) {
    opc::toString(std::string("a"), false);
    opc::detail::toStringFromUTF8String("a", false);
    opc::detail::toUTF8String(u"a", false);
    EXPECT_EQ(platform.callsTo({"codecvt_string_to_ustring", "codecvt_ustring_to_string"}),
              (Calls{"codecvt_string_to_ustring('', false)", "codecvt_string_to_ustring('UTF-8', false)",
                     "codecvt_ustring_to_string('UTF-8', false)"}));
}

TEST_F(StringConversionsContract, IntoASCIIStrictlyAndWithoutInitializing) {
    EXPECT_EQ(opc::toASCIIString(u"a"), "ascii(a)");
    EXPECT_EQ(platform.calls(), (Calls{"codecvt_ustring_to_ascii(false)", "to_string('a', ascii[false])"}));
}

TEST_F(StringConversionsContract, FromAnASCIILiteralStrictlyAndWithoutInitializing) {
    EXPECT_EQ(opc::toStringFromASCIIStringLiteral("a"), u"fromASCII(a)");
    EXPECT_EQ(platform.calls(), (Calls{"codecvt_ascii_to_ustring(false)", "to_ustring('a', ascii[false])"}));
}

TEST_F(StringConversionsContract, IntoTheUsersEncodingWithoutAConverter) {
    EXPECT_EQ(opc::toUDEString(u"a"), "user(a)");
    EXPECT_EQ(platform.calls(), (Calls{"initialize()", "to_string('a')"}));
}

TEST_F(StringConversionsContract, FromWideTextWithoutInitializing) {
    EXPECT_EQ(opc::toString(std::wstring(L"a")), u"fromWide(a)");
    EXPECT_EQ(platform.calls(), Calls{"to_ustring('a')"});
}

TEST_F(StringConversionsContract, IntoWideTextWithoutInitializing) {
    EXPECT_EQ(opc::toWideString(u"a"), L"wide(a)");
    EXPECT_EQ(platform.calls(), Calls{"to_wstring('a')"});
}

TEST_F(StringConversionsContract, LoweringShortTextTakesOneCall) {
    EXPECT_EQ(opc::toLowerString(u"AbC"), u"abc");
    EXPECT_EQ(platform.calls(), (Calls{"initialize()", "transform(1024, 3, 0)"}));
}

TEST_F(StringConversionsContract, LoweringToNothingGivesNothing) {
    platform.transform.returns(std::size_t{0});
    EXPECT_EQ(opc::toLowerString(u"AbC"), u"");
    EXPECT_EQ(opc::toLowerString(u""), u"");
}

TEST_F(StringConversionsContract, LoweringToTheSizeOfTheBufferTakesOneCall) {
    EXPECT_EQ(opc::toLowerString(std::u16string(1024, u'A')), std::u16string(1024, u'a'));
    EXPECT_EQ(platform.calls(), (Calls{"initialize()", "transform(1024, 1024, 0)"}));
}

TEST_F(StringConversionsContract, LoweringToMoreThanTheBufferTakesASecondCallOfExactlyThatSize) {
    EXPECT_EQ(opc::toLowerString(std::u16string(1025, u'A')), std::u16string(1025, u'a'));
    EXPECT_EQ(platform.calls(),
              (Calls{"initialize()", "transform(1024, 1025, 0)", "transform(1025, 1025, 0)"}));
}

TEST_F(StringConversionsContract, LoweringMayMakeTextLonger) {
    platform.transform.returns(std::size_t{2000});
    EXPECT_EQ(opc::toLowerString(u"A").size(), 2000u);
    EXPECT_EQ(platform.calls(), (Calls{"initialize()", "transform(1024, 1, 0)", "transform(2000, 1, 0)"}));
}

TEST_F(StringConversionsContract, LoweringASCIIAsksForInitializationAlone) {
    EXPECT_EQ(opc::toLowerASCIIString(u"MiXeD-09@[`{"), u"mixed-09@[`{");
    EXPECT_EQ(platform.calls(), Calls{"initialize()"});
}

TEST_F(StringConversionsContract, ComparingAsksForInitializationAlone) {
    EXPECT_EQ(opc::caselessCompare(u"abc", u"ABD"), -1);
    EXPECT_EQ(opc::caselessCompare(u"", u""), 0);
    EXPECT_EQ(platform.calls(), (Calls{"initialize()", "initialize()"}));
}

TEST_F(StringConversionsContract, InvalidCharactersHaveTheirOwnWordsAndAClearedCode) {
    const std::function<void()> calls[] = {
        [] { opc::toLowerASCIIString(u"a\u0080"); },
        [] { opc::caselessCompare(u"\u00E9", u"a"); },
        [] { opc::caselessCompare(u"a", u"\u00E9"); },
    };
    for (const auto& call : calls) {
        try {
            call();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const opc::Exception& failure) {
            EXPECT_STREQ(failure.what(), "Invalid character error.");
            EXPECT_EQ(failure.code(), boost::system::error_code());
        }
    }
}

TEST_F(StringConversionsContract, WhiteSpaceIsScannedForWithoutInitializing) {
    EXPECT_TRUE(opc::hasWhitespace(u"a b"));
    EXPECT_FALSE(opc::hasWhitespace(u"ab"));
    EXPECT_FALSE(opc::hasWhitespace(u""));
    EXPECT_EQ(platform.calls(), (Calls{"scan('a b', 16, 0)", "scan('ab', 16, 0)", "scan('', 16, 0)"}));
}

TEST_F(StringConversionsContract, WhiteSpaceIsThereWhereTheMatchIsBeforeTheEnd) {
    platform.scan.returns(std::size_t{1}).returns(std::size_t{2}).returns(std::size_t{0});
    EXPECT_TRUE(opc::hasWhitespace(u"ab"));
    EXPECT_FALSE(opc::hasWhitespace(u"ab"));
    EXPECT_TRUE(opc::hasWhitespace(u"ab"));
}

/// A function and the member of the script that makes it fail.
struct Conversion {
    const char* name;
    std::function<void(Platform&, std::exception_ptr)> script;
    std::function<void()> call;
};

const Conversion kConvertingFailures[] = {
    {"toString", [](auto& p, auto f) { p.to_ustring.rethrows(f); },
     [] { opc::toString(std::string("a"), false); }},
    {"toString, converter", [](auto& p, auto f) { p.makeConverter.rethrows(f); },
     [] { opc::toString(std::string("a"), false); }},
    {"toStringFromUTF8String", [](auto& p, auto f) { p.to_ustring.rethrows(f); },
     [] { opc::detail::toStringFromUTF8String("a", false); }},
    {"toStringFromUTF8String, converter", [](auto& p, auto f) { p.makeConverter.rethrows(f); },
     [] { opc::detail::toStringFromUTF8String("a", false); }},
    {"toUTF8String", [](auto& p, auto f) { p.to_string.rethrows(f); },
     [] { opc::detail::toUTF8String(u"a", false); }},
    {"toUTF8String, converter", [](auto& p, auto f) { p.makeConverter.rethrows(f); },
     [] { opc::detail::toUTF8String(u"a", false); }},
    {"toASCIIString", [](auto& p, auto f) { p.to_string.rethrows(f); }, [] { opc::toASCIIString(u"a"); }},
    {"toStringFromASCIIStringLiteral", [](auto& p, auto f) { p.to_ustring.rethrows(f); },
     [] { opc::toStringFromASCIIStringLiteral("a"); }},
    {"toUDEString", [](auto& p, auto f) { p.to_string.rethrows(f); }, [] { opc::toUDEString(u"a"); }},
};

const Conversion kPassingFailures[] = {
    {"toString", [](auto& p, auto f) { p.to_ustring.rethrows(f); },
     [] { opc::toString(std::wstring(L"a")); }},
    {"toWideString", [](auto& p, auto f) { p.to_wstring.rethrows(f); }, [] { opc::toWideString(u"a"); }},
    {"toLowerString", [](auto& p, auto f) { p.transform.rethrows(f); }, [] { opc::toLowerString(u"a"); }},
};

TEST(StringConversionFailures, KeepTheWordsOfTheLibraryAndAClearedCode) {
    for (const Conversion& conversion : kConvertingFailures) {
        SCOPED_TRACE(conversion.name);
        Platform platform;
        conversion.script(platform, std::make_exception_ptr(CvtInvalidSequence("words of the library")));
        try {
            conversion.call();
            ADD_FAILURE() << "nothing was thrown";
        } catch (const opc::Exception& failure) {
            EXPECT_STREQ(failure.what(), "words of the library");
            EXPECT_EQ(failure.code(), boost::system::error_code());
            EXPECT_EQ(failure.code().category(), boost::system::system_category());
        }
    }
}

TEST(StringConversionFailures, OfAnyOtherKindPassUnchanged) {
    for (const Conversion& conversion : kConvertingFailures) {
        SCOPED_TRACE(conversion.name);
        Platform platform;
        conversion.script(platform, std::make_exception_ptr(7));
        EXPECT_THROW(conversion.call(), int);
    }
}

TEST(StringConversionFailures, OfTheRemainingFunctionsPassUnchanged) {
    for (const Conversion& conversion : kPassingFailures) {
        SCOPED_TRACE(conversion.name);
        Platform platform;
        conversion.script(platform, std::make_exception_ptr(CvtInvalidSequence("words")));
        EXPECT_THROW(conversion.call(), CvtInvalidSequence);
    }
}

TEST(StringConversionFailures, LeaveNoConverterBehind) {
    Platform platform;
    platform.to_ustring.throws(CvtInvalidSequence("words"));
    EXPECT_THROW(opc::toString(std::string("a"), false), opc::Exception);
    EXPECT_EQ(platform.callsTo({"~codecvt_string_to_ustring"}), Calls{"~codecvt_string_to_ustring()"});
}

}  // namespace
