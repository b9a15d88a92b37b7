#include <pkgcore/portable/storage/iri/SchemeRegistry.hpp>

#include <pkgcore/platform/storage/AbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/IRIPrefix.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::hasIRIPrefix;
using namespace foundation::storage::portable;

namespace {

std::u16string numbered(int number) {
    std::u16string scheme = u"number";
    for (const char digit : std::to_string(number)) {
        scheme += static_cast<char16_t>(digit);
    }
    return scheme;
}

TEST(SchemeRegistry, KnowsWhatWasAddedInAnyLetterCase) {
    EXPECT_FALSE(hasIRIPrefix(u"x-added.1://a"));
    EXPECT_THROW(AbsoluteIRI(u"x-added.1://a"), foundation::storage::vfs::UnsupportedIRISchemeException);
    registerScheme(u"X-Added.1", false);
    EXPECT_TRUE(hasIRIPrefix(u"x-added.1://a"));
    EXPECT_TRUE(hasIRIPrefix(u"X-ADDED.1://a"));
    EXPECT_FALSE(hasIRIPrefix(u"x-added.1:/a"));
    EXPECT_FALSE(hasIRIPrefix(u"x-added.12://a"));
    EXPECT_EQ(AbsoluteIRI(u"x-added.1://a").getScheme(), u"x-added.1");
}

TEST(SchemeRegistry, TakesByteNamesOnceTheyAreThere) {
    EXPECT_TRUE(hasByteNames(u"FILE"));
    EXPECT_FALSE(hasByteNames(u"mem"));
    registerScheme(u"bytes", false);
    EXPECT_FALSE(hasByteNames(u"bytes"));
    registerScheme(u"bytes", true);
    registerScheme(u"bytes", false);
    EXPECT_TRUE(hasByteNames(u"bytes"));
    EXPECT_EQ(AbsoluteIRI(u"bytes:///%FF").toString(), u"bytes:///%FF");
}

TEST(SchemeRegistry, IsAskedWhileOthersAdd) {
    constexpr int kSchemes = 200;
    std::atomic<bool> stop{false};
    std::thread asking([&stop] {
        while (!stop) {
            for (int i = 0; i < kSchemes && hasIRIPrefix(numbered(i) + u"://"); ++i) {
                ASSERT_TRUE(isRegisteredScheme(numbered(i)));
            }
        }
    });
    std::vector<std::thread> adding;
    for (int t = 0; t < 3; ++t) {
        adding.emplace_back([] {
            for (int i = 0; i < kSchemes; ++i) registerScheme(numbered(i), i % 2 == 0);
        });
    }
    for (std::thread& thread : adding) thread.join();
    stop = true;
    asking.join();
    for (int i = 0; i < kSchemes; ++i) {
        EXPECT_TRUE(hasIRIPrefix(numbered(i) + u"://a"));
        EXPECT_EQ(hasByteNames(numbered(i)), i % 2 == 0);
    }
}

}  // namespace
