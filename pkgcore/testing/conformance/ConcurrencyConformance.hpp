#pragma once

#include <pkgcore/testing/conformance/Needs.hpp>

#include <atomic>
#include <thread>
#include <vector>

namespace foundation::storage::conformance {

/// Runs a call on several threads at once, each with its number.
template <typename Call>
void onThreads(int count, Call call) {
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([i, &call] { call(i); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_P(ProviderConformance, ReadersSeeOneContentOrTheOther) {
    PKGCORE_NEEDS(Need::Writing);
    const std::string contents[] = {someBytes(100'000, 1), someBytes(150'000, 2)};
    ASSERT_TRUE(write(u"f", contents[0]));
    std::atomic<int> mixtures{0};
    onThreads(3, [&](int thread) {
        for (int i = 0; i < 40; ++i) {
            if (thread == 0) {
                if (!write(u"f", contents[i % 2])) ++mixtures;
            } else {
                const std::string seen = read(u"f");
                if (seen != contents[0] && seen != contents[1]) ++mixtures;
            }
        }
    });
    EXPECT_EQ(mixtures, 0);
}

TEST_P(ProviderConformance, OneOfManyMakesTheFolder) {
    PKGCORE_NEEDS(Need::Folders);
    std::atomic<int> made{0};
    onThreads(4, [&](int /*thread*/) {
        for (int i = 0; i < 50; ++i) {
            const Folder wanted = folder(u"d" + std::u16string(static_cast<std::size_t>(i), u'x'));
            if (!failureOf([&] { wanted.createFolder(); })) ++made;
        }
    });
    EXPECT_EQ(made, 50);
    EXPECT_EQ(list(u"").size(), 50u);
}

TEST_P(ProviderConformance, AllMayMakeTheWayAtOnce) {
    PKGCORE_NEEDS(Need::Folders);
    std::atomic<int> failed{0};
    onThreads(4, [&](int thread) {
        const std::u16string own(1, static_cast<char16_t>(u'a' + thread));
        for (int i = 0; i < 20; ++i) {
            const std::u16string shared = u"s" + std::u16string(static_cast<std::size_t>(i), u'/') + u"x/y/";
            if (failureOf([&] { folder(shared + own).createFolderRecursive(); })) ++failed;
        }
    });
    EXPECT_EQ(failed, 0);
}

TEST_P(ProviderConformance, AFileIsMovedByOneOfMany) {
    PKGCORE_NEEDS(Need::Writing, Need::MovingAtOnce);
    std::atomic<int> moved{0};
    for (int round = 0; round < 20; ++round) {
        ASSERT_TRUE(write(u"f", "text"));
        onThreads(3, [&](int thread) {
            const std::u16string own = u"to" + std::u16string(1, static_cast<char16_t>(u'a' + thread));
            if (!failureOf([&] { file(u"f").moveFile(file(own), kReplace); })) ++moved;
        });
        EXPECT_TRUE(isMissing(u"f"));
    }
    EXPECT_EQ(moved, 20);
}

}  // namespace foundation::storage::conformance
