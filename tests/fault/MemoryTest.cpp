#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include "tests/fault/AllocationCounter.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"

#include <gtest/gtest.h>

namespace test {

namespace {

/// What an operation may take beside its result, whatever the size of the tree: a block of records, paths,
/// buffers.
constexpr std::ptrdiff_t kConstant = 512 * 1024;

/// What a level that a walk is in may take: where its folder is and a name, not its entries.
constexpr std::ptrdiff_t kPerLevel = 512;

/// A chain of folders with `others` files in each.
void makeWideChain(const std::string& top, std::ptrdiff_t levels, std::ptrdiff_t others) {
    std::string folder = top;
    for (std::ptrdiff_t level = 0; level < levels; ++level) {
        for (std::ptrdiff_t number = 0; number < others; ++number) {
            makeFile(folder + "/file-with-a-name-of-some-length-" + std::to_string(number));
        }
        folder += "/d";
        makeFolder(folder);
    }
}

class MemoryTest : public ::testing::Test {
protected:
    TempTree tree{fastFolder()};
    opc::LocalFileSystemOps ops;
};

TEST_F(MemoryTest, AListingTakesItsResultAndNothingThatGrows) {
    for (int number = 10'000; number < 30'000; ++number) {
        makeFile(tree / ("file-with-a-name-of-some-length-" + std::to_string(number)));
    }
    std::vector<opc::ustring> files;
    files.reserve(20'000);  // what the vector throws away while it grows is not the library's
    const PeakMemory memory;
    ops.getFiles(text(tree.path()), files, true);
    EXPECT_EQ(20'000U, files.size());
    EXPECT_LT(memory.bytes() - memory.kept(), kConstant);
}

TEST_F(MemoryTest, AListingOfADeepTreeTakesItsPathsAndLittlePerLevel) {
    constexpr std::ptrdiff_t levels = 1'000;
    makeChain(tree.path(), "ab", levels);
    std::vector<opc::ustring> files;
    const PeakMemory memory;
    ops.getFiles(text(tree.path()), files, true);
    EXPECT_EQ(1U, files.size());
    // The listing of each level under way has the path of the entry on which it stands, 3 characters longer
    // than that of the level above.
    const std::ptrdiff_t paths = levels * levels / 2 * 3 * static_cast<std::ptrdiff_t>(sizeof(char16_t));
    EXPECT_LT(memory.bytes(), paths + levels * kPerLevel + kConstant);
}

TEST_F(MemoryTest, NoOtherEntriesAreKeptOnTheWayDown) {
    constexpr std::ptrdiff_t levels = 300;
    constexpr std::ptrdiff_t others = 100;
    makeFolder(tree / "from");
    makeWideChain(tree / "from", levels, others);
    {
        const PeakMemory memory;
        ops.copy(tree.text("from"), tree.text("to"), opc::Fail);
        ops.removeAll(tree.text("to"));
        EXPECT_LT(memory.bytes(), levels * kPerLevel + kConstant);
    }
    std::vector<opc::ustring> files;
    files.reserve(levels * others);
    const PeakMemory memory;
    ops.getFiles(tree.text("from"), files, true);
    EXPECT_EQ(levels * others, static_cast<std::ptrdiff_t>(files.size()));
    const std::ptrdiff_t paths = levels * levels / 2 * 2 * static_cast<std::ptrdiff_t>(sizeof(char16_t));
    EXPECT_LT(memory.bytes() - memory.kept(), paths + levels * kPerLevel + kConstant);
}

TEST_F(MemoryTest, RemovingAndCopyingTakeNoMoreForLargerFolders) {
    makeFolder(tree / "from");
    for (int number = 10'000; number < 15'000; ++number) {
        makeFile(tree / ("from/file-with-a-name-of-some-length-" + std::to_string(number)));
    }
    const PeakMemory memory;
    ops.copy(tree.text("from"), tree.text("to"), opc::Fail);
    ops.removeAll(tree.text("to"));
    EXPECT_LT(memory.bytes(), kConstant);
    EXPECT_LE(memory.kept(), 0);
}

TEST_F(MemoryTest, RemovingAndCopyingADeepTreeTakeLittlePerLevel) {
    constexpr std::ptrdiff_t levels = 1'000;
    makeFolder(tree / "from");
    makeChain(tree / "from", "ab", levels);
    const PeakMemory memory;
    ops.copy(tree.text("from"), tree.text("to"), opc::Fail);
    ops.removeAll(tree.text("to"));
    EXPECT_LT(memory.bytes(), levels * kPerLevel + kConstant);
}

TEST_F(MemoryTest, CopyingALargeFileTakesABuffer) {
    makeFile(tree / "from", someBytes(20'000'000));
    const PeakMemory memory;
    ops.copy(tree.text("from"), tree.text("to"), opc::Fail);
    EXPECT_LT(memory.bytes(), kConstant);
}

TEST_F(MemoryTest, NothingIsKept) {
    makeFile(tree / "file");
    std::vector<opc::ustring> files;
    files.reserve(1);
    boost::system::error_code ec;
    ops.exists(tree.text("missing"), ec);  // whatever is made once is made here
    const PeakMemory memory;
    for (int round = 0; round < 100; ++round) {
        ops.exists(tree.text("file"), ec);
        ops.createInputStream(tree.text("file"), 0, ec);
        ops.createInputStream(tree.text("missing"), 0, ec);
        ops.copy(tree.text("missing"), tree.text("to"), opc::Fail, ec);
        ops.getFiles(tree.text("missing"), files, true, ec);
    }
    EXPECT_EQ(0, memory.kept());
}

}  // namespace
}  // namespace test
