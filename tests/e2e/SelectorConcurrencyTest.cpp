// Copies of one selector on many threads.

#include <pkgcore/pkgcore.hpp>

#include "tests/support/ManyThreads.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <vector>

namespace test {
namespace {

TEST(SelectorConcurrency, CopiesAreMadeUsedAndDroppedAnywhere) {
    const TempTree tree;
    makeFile(tree / "file");
    const opc::FileSystemOpsSelector selector;
    const opc::FileSystemOps* const local = &selector.getLocal();
    std::atomic<int> wrong{0};
    inManyThreads([&] {
        for (int round = 0; round < 500; ++round) {
            opc::FileSystemOpsSelector copy(selector);
            const opc::FileSystemOpsSelector moved(std::move(copy));
            copy = moved;
            wrong += &copy.getForPath(u"a path") != local;
            wrong += !moved.getPhysical().isFile(tree.text("file"));
        }
    });
    EXPECT_EQ(0, wrong);
}

TEST(SelectorConcurrency, TheLastCopyKeepsTheBackEndOnWhicheverThread) {
    const TempTree tree;
    makeFile(tree / "file");
    for (int round = 0; round < 50; ++round) {
        std::vector<std::optional<opc::FileSystemOpsSelector>> copies(8, opc::FileSystemOpsSelector());
        std::atomic<int> wrong{0};
        inManyThreads([&](int number) {
            auto& copy = copies[static_cast<std::size_t>(number)];
            wrong += !copy->getLocal().exists(tree.text("file"));
            copy.reset();
        });
        EXPECT_EQ(0, wrong);
    }
}

}  // namespace
}  // namespace test
