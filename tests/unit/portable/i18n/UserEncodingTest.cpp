#include <pkgcore/portable/i18n/UserEncoding.hpp>

#include "tests/support/ScopedEnvironment.hpp"

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <fstream>
#include <ostream>
#include <string>

using namespace fl::i18n::portable;
using test::ScopedLocaleEnvironment;

namespace {

struct LocaleName {
    const char* locale;
    const char* encoding;
};

void PrintTo(const LocaleName& name, std::ostream* out) { *out << "'" << name.locale << "'"; }

class EncodingOfLocale : public ::testing::TestWithParam<LocaleName> {};

TEST_P(EncodingOfLocale, IsItsCodeSetOrWhatTheNameImplies) {
    EXPECT_EQ(encodingOfLocale(GetParam().locale), GetParam().encoding);
}

INSTANTIATE_TEST_SUITE_P(NoLocale, EncodingOfLocale,
                         ::testing::Values(LocaleName{"", "UTF-8"}, LocaleName{"C", "UTF-8"},
                                           LocaleName{"POSIX", "UTF-8"}, LocaleName{"tlh_QO", "UTF-8"},
                                           LocaleName{"/usr/share/locale", "UTF-8"}, LocaleName{"_", "UTF-8"},
                                           LocaleName{"@", "UTF-8"}, LocaleName{".", "UTF-8"}));

INSTANTIATE_TEST_SUITE_P(CodeSet, EncodingOfLocale,
                         ::testing::Values(LocaleName{"en_US.UTF-8", "UTF-8"}, LocaleName{"C.UTF-8", "UTF-8"},
                                           LocaleName{"C.ISO-8859-1", "ISO-8859-1"},
                                           LocaleName{"de_DE.iso885915@euro", "iso885915"},
                                           LocaleName{"de_DE.UTF-8@euro", "UTF-8"},
                                           LocaleName{"ru_RU.KOI8-R", "KOI8-R"},
                                           LocaleName{"ja_JP.Shift_JIS", "Shift_JIS"}));

INSTANTIATE_TEST_SUITE_P(Implied, EncodingOfLocale,
                         ::testing::Values(LocaleName{"de_DE", "ISO-8859-1"}, LocaleName{"de", "ISO-8859-1"},
                                           LocaleName{"de_DE.", "ISO-8859-1"},
                                           LocaleName{"de_DE@euro", "ISO-8859-15"},
                                           LocaleName{"el_GR@euro", "ISO-8859-7"},
                                           LocaleName{"ca_ES@valencia", "UTF-8"},
                                           LocaleName{"en_US", "ISO-8859-1"}, LocaleName{"en_IN", "UTF-8"},
                                           LocaleName{"ru_RU", "ISO-8859-5"}, LocaleName{"ru_UA", "KOI8-U"},
                                           LocaleName{"ja_JP", "EUC-JP"}, LocaleName{"zh_TW", "Big5"},
                                           LocaleName{"zh_CN", "GB2312"}, LocaleName{"zh", "UTF-8"},
                                           LocaleName{"hi_IN", "UTF-8"}, LocaleName{"DE_DE", "UTF-8"}));

bool icuKnows(const std::string& encoding) {
    UErrorCode error = U_ZERO_ERROR;
    ucnv_close(ucnv_open(encoding.c_str(), &error));
    return U_SUCCESS(error) != 0;
}

TEST(EncodingOfLocale, IsOneThatIcuKnowsWhereverANameImpliesIt) {
    for (const char* locale :
         {"an", "ar", "be", "cs", "cy",    "de", "el", "he", "ja",    "ko",    "ku",
          "lg", "lt", "mt", "ru", "ru_UA", "th", "uk", "yi", "zh_CN", "zh_HK", "zh_TW"}) {
        const std::string name(encodingOfLocale(locale));
        EXPECT_TRUE(icuKnows(name)) << locale << ": " << name;
    }
}

TEST(EncodingOfLocale, IsWhatTheCLibraryOfThisMachineSays) {
    std::ifstream supported("/usr/share/i18n/SUPPORTED");
    if (!supported) GTEST_SKIP() << "this machine has no list of locales";
    std::string locale;
    std::string encoding;
    while (supported >> locale >> encoding) {
        const std::string expected = icuKnows(encoding) ? encoding : "UTF-8";
        if (locale.find('.') != std::string::npos) continue;
        EXPECT_EQ(ucnv_compareNames(std::string(encodingOfLocale(locale)).c_str(), expected.c_str()), 0)
            << locale << ": " << encodingOfLocale(locale) << ", not " << expected;
    }
}

TEST(UserEncoding, IsUtf8WithoutALocale) {
    const ScopedLocaleEnvironment environment(nullptr);
    EXPECT_EQ(userEncodingName(), "UTF-8");
}

TEST(UserEncoding, ComesFromTheFirstVariableThatIsSet) {
    const ScopedLocaleEnvironment lang("a.1");
    EXPECT_EQ(userEncodingName(), "1");
    const ScopedLocaleEnvironment ctype("a.1", "b.2");
    EXPECT_EQ(userEncodingName(), "2");
    const ScopedLocaleEnvironment all("a.1", "b.2", "c.3");
    EXPECT_EQ(userEncodingName(), "3");
}

TEST(UserEncoding, PassesOverEmptyVariables) {
    const ScopedLocaleEnvironment environment("a.1", "", "");
    EXPECT_EQ(userEncodingName(), "1");
    const ScopedLocaleEnvironment empty("", "", "");
    EXPECT_EQ(userEncodingName(), "UTF-8");
}

TEST(UserEncoding, LetsTheCLocaleOfAStrongerVariableWin) {
    const ScopedLocaleEnvironment environment("de_DE.ISO-8859-1", nullptr, "C");
    EXPECT_EQ(userEncodingName(), "UTF-8");
}

TEST(UserEncoding, FollowsTheEnvironmentFromCallToCall) {
    const ScopedLocaleEnvironment before("a.1");
    EXPECT_EQ(userEncodingName(), "1");
    {
        const ScopedLocaleEnvironment inner("a.2");
        EXPECT_EQ(userEncodingName(), "2");
    }
    EXPECT_EQ(userEncodingName(), "1");
}

}  // namespace
