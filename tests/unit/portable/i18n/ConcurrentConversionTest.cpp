#include <pkgcore/platform/i18n/Characters.hpp>
#include <pkgcore/platform/i18n/Codecvt.hpp>
#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/platform/i18n/Initialize.hpp>

#include "tests/support/ManyThreads.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <string>

using namespace fl::i18n;
using test::inManyThreads;

namespace {

TEST(ConcurrentConversion, InitializesFromManyThreads) {
    inManyThreads([] {
        for (int call = 0; call < 1000; ++call) initialize();
    });
    EXPECT_NO_THROW(initialize());
}

TEST(ConcurrentConversion, ConvertsInManyThreadsAtOnce) {
    const std::u16string text = u"a\u00E4\u65E5\u672C";
    std::atomic<int> wrong{0};
    inManyThreads([&] {
        for (int round = 0; round < 200; ++round) {
            for (const char* encoding : {"UTF-8", "EUC-JP", "ISO-2022-JP", "GB18030", ""}) {
                const codecvt_ustring_to_string encoder(encoding, true);
                const codecvt_string_to_ustring decoder(encoding, true);
                const std::u16string back = to_ustring(to_string(text, encoder), decoder);
                if (back.substr(2) != text.substr(2)) ++wrong;
            }
            char16_t lowered[8];
            if (detail::transform(lowered, 8, u"\u00C4\u03A3", 2, to_lower) != 2) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}

}  // namespace
