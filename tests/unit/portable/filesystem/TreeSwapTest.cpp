#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdio.h>

#include <atomic>
#include <thread>

namespace {

using test::makeFile;
using test::makeFolder;
using test::makeLink;
using test::snapshot;
using test::TempTree;

/// Exchanges two names over and over on a thread of its own, until the end of the scope.
class Swapper {
public:
    Swapper(std::string one, std::string other)
        : one_(std::move(one)), other_(std::move(other)), thread_([this] { run(); }) {}
    ~Swapper() {
        stop_ = true;
        thread_.join();
    }
    Swapper(const Swapper&) = delete;
    Swapper& operator=(const Swapper&) = delete;

    long swaps() const { return swaps_; }

private:
    void run() {
        while (!stop_) {
            swaps_ += ::renameat2(AT_FDCWD, one_.c_str(), AT_FDCWD, other_.c_str(), RENAME_EXCHANGE) == 0;
        }
    }

    std::string one_;
    std::string other_;
    std::atomic<bool> stop_{false};
    std::atomic<long> swaps_{0};
    std::thread thread_;
};

constexpr long kSwaps = 3000;
constexpr int kFiles = 20;

/// A folder in a tree that takes turns with a link to a canary.
class TreeSwap : public ::testing::Test {
protected:
    TreeSwap() {
        makeFolder(tree / "canary");
        makeFolder(tree / "canary/inner");
        for (int i = 0; i < kFiles; ++i) {
            makeFile(tree / ("canary/" + std::to_string(i)), "canary");
            makeFile(tree / ("canary/inner/" + std::to_string(i)), "canary");
        }
        before = snapshot(tree / "canary");
    }

    void fillVictim(const std::string& top) const {
        makeFolder(tree / top);
        makeFolder(tree / (top + "/swapped"));
        makeFolder(tree / (top + "/swapped/inner"));
        for (int i = 0; i < kFiles; ++i) {
            makeFile(tree / (top + "/swapped/" + std::to_string(i)));
            makeFile(tree / (top + "/swapped/inner/" + std::to_string(i)));
        }
    }

    void tryTo(const std::function<void()>& operation) const {
        try {
            operation();
        } catch (const fl::filesystem::FsysExceptionBase&) {
            ++failures;  // to fail is a fair answer to somebody who swaps folders
        }
    }

    TempTree tree{test::fastFolder()};
    test::TreeSnapshot before;
    mutable long failures = 0;
    test::NoDescriptorLeft noDescriptorLeft;
};

TEST_F(TreeSwap, NeverLeadsRemoveAllOutOfItsTree) {
    long swaps = 0;
    while (swaps < kSwaps) {
        fillVictim("top");
        makeLink(tree / "canary", tree / "link");
        {
            const Swapper swapper(tree / "top/swapped", tree / "link");
            while (swapper.swaps() == 0) {
            }
            tryTo([&] { fl::filesystem::remove_all(tree.text("top")); });
            swaps += swapper.swaps();
        }
        ASSERT_EQ(before, snapshot(tree / "canary"));
        for (const char* const name : {"top", "link"}) {
            tryTo([&] { fl::filesystem::remove_all(tree.text(name)); });
        }
    }
}

TEST_F(TreeSwap, NeverLeadsCopyDirectoryToWriteElsewhere) {
    fillVictim("source");
    long swaps = 0;
    while (swaps < kSwaps) {
        makeFolder(tree / "copy");
        makeFolder(tree / "copy/swapped");
        makeLink(tree / "canary", tree / "link");
        {
            const Swapper swapper(tree / "copy/swapped", tree / "link");
            while (swapper.swaps() == 0) {
            }
            tryTo([&] { fl::filesystem::copy_directory(tree.text("source"), tree.text("copy")); });
            swaps += swapper.swaps();
        }
        ASSERT_EQ(before, snapshot(tree / "canary"));
        for (const char* const name : {"copy", "link"}) {
            tryTo([&] { fl::filesystem::remove_all(tree.text(name)); });
        }
    }
}

TEST_F(TreeSwap, NeverLeadsCopyDirectoryToReadElsewhere) {
    fillVictim("source");
    makeLink(tree / "canary", tree / "link");
    const Swapper swapper(tree / "source/swapped", tree / "link");
    while (swapper.swaps() < kSwaps) {
        tryTo([&] { fl::filesystem::copy_directory(tree.text("source"), tree.text("copy")); });
        for (const auto& [name, description] : snapshot(tree / "copy")) {
            ASSERT_EQ(std::string::npos, description.find("'canary'")) << name;
        }
        fl::filesystem::remove_all(tree.text("copy"));
    }
}

}  // namespace
