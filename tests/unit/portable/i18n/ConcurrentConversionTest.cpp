#include <pkgcore/platform/i18n/Characters.hpp>
#include <pkgcore/platform/i18n/Codecvt.hpp>
#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/platform/i18n/Initialize.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

using namespace fl::i18n;

namespace {

/// Runs the body in several threads that begin at the same moment, as far as that can be had.
void inManyThreads(const std::function<void()>& body) {
    constexpr int kThreads = 8;
    std::atomic<int> waiting{kThreads};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            --waiting;
            while (waiting != 0) std::this_thread::yield();
            body();
        });
    }
    for (std::thread& thread : threads) thread.join();
}

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
