// Guards and temporary names of many threads.

#include <pkgcore/util/TempNames.hpp>
#include <pkgcore/util/TempdirGuard.hpp>
#include <pkgcore/util/TempfileGuard.hpp>

#include "tests/support/ManyThreads.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <memory>
#include <set>
#include <vector>

namespace {

TEST(ConcurrentGuards, LeaveTheirFolderEmpty) {
    constexpr int kRounds = 625;  // of two guards each in eight threads: 10,000 in all
    const test::TempTree tree(test::fastFolder());
    test::inManyThreads([&tree] {
        for (int round = 0; round < kRounds; ++round) {
            const opc::util::TempfileGuard file(tree.text(""));
            const opc::util::TempdirGuard folder(tree.text(""));
            const opc::util::TempfileGuard inner(folder.getDirectoryName());
        }
    });
    EXPECT_EQ(::rmdir(tree.path().c_str()), 0);
}

TEST(ConcurrentGuards, EndInOtherThreadsThanTheyBegan) {
    const test::TempTree tree(test::fastFolder());
    std::vector<std::unique_ptr<opc::util::TempdirGuard>> guards(8);
    test::inManyThreads([&](int number) {
        auto& guard = guards[static_cast<std::size_t>(number)];
        guard = std::make_unique<opc::util::TempdirGuard>(tree.text(""));
    });
    test::inManyThreads([&](int number) { guards[static_cast<std::size_t>(7 - number)].reset(); });
    EXPECT_EQ(::rmdir(tree.path().c_str()), 0);
}

TEST(ConcurrentTempNames, AreAllDifferent) {
    std::vector<std::vector<opc::ustring>> drawn(8);
    test::inManyThreads([&](int number) {
        for (int draw = 0; draw < 500; ++draw) {
            drawn[static_cast<std::size_t>(number)].push_back(opc::util::getTempName(u"", u"", u""));
        }
    });
    std::set<opc::ustring> names;
    for (const std::vector<opc::ustring>& some : drawn) {
        names.insert(some.begin(), some.end());
    }
    EXPECT_EQ(names.size(), 8U * 500U);
}

TEST(ConcurrentTempNames, LieInOneFolderForAll) {
    const opc::ustring folder = opc::util::getTempDir();
    std::atomic<int> others{0};
    test::inManyThreads([&] {
        for (int call = 0; call < 500; ++call) {
            others += opc::util::getTempDir() != folder;
        }
    });
    EXPECT_EQ(others, 0);
}

}  // namespace
