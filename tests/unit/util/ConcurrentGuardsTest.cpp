// Guards of many threads in one folder.

#include <pkgcore/util/TempdirGuard.hpp>
#include <pkgcore/util/TempfileGuard.hpp>

#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

#include <unistd.h>

#include <thread>
#include <vector>

namespace {

TEST(ConcurrentGuards, LeaveTheirFolderEmpty) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 625;  // of two guards each: 10,000 in all
    const test::TempTree tree(test::fastFolder());
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&tree] {
            for (int round = 0; round < kRounds; ++round) {
                const opc::util::TempfileGuard file(tree.text(""));
                const opc::util::TempdirGuard folder(tree.text(""));
                const opc::util::TempfileGuard inner(folder.getDirectoryName());
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(::rmdir(tree.path().c_str()), 0);
}

}  // namespace
