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
        makeFolder(tree_ / "canary");
        makeFolder(tree_ / "canary/inner");
        for (int i = 0; i < kFiles; ++i) {
            makeFile(tree_ / ("canary/" + std::to_string(i)), "canary");
            makeFile(tree_ / ("canary/inner/" + std::to_string(i)), "canary");
        }
        before_ = snapshot(tree_ / "canary");
    }

    void fillVictim(const std::string& top) const {
        makeFolder(tree_ / top);
        makeFolder(tree_ / (top + "/swapped"));
        makeFolder(tree_ / (top + "/swapped/inner"));
        for (int i = 0; i < kFiles; ++i) {
            makeFile(tree_ / (top + "/swapped/" + std::to_string(i)));
            makeFile(tree_ / (top + "/swapped/inner/" + std::to_string(i)));
        }
    }

    void tryTo(const std::function<void()>& operation) const {
        try {
            operation();
        } catch (const fl::filesystem::FsysExceptionBase&) {
            ++failures_;  // to fail is a fair answer to somebody who swaps folders
        }
    }

    TempTree tree_{test::fastFolder()};
    test::TreeSnapshot before_;
    mutable long failures_ = 0;
    test::NoDescriptorLeft noDescriptorLeft_;
};

TEST_F(TreeSwap, NeverLeadsRemoveAllOutOfItsTree) {
    long swaps = 0;
    while (swaps < kSwaps) {
        fillVictim("top");
        makeLink(tree_ / "canary", tree_ / "link");
        {
            const Swapper swapper(tree_ / "top/swapped", tree_ / "link");
            while (swapper.swaps() == 0) {
            }
            tryTo([&] { fl::filesystem::remove_all(tree_.text("top")); });
            swaps += swapper.swaps();
        }
        ASSERT_EQ(before_, snapshot(tree_ / "canary"));
        for (const char* const name : {"top", "link"}) {
            tryTo([&] { fl::filesystem::remove_all(tree_.text(name)); });
        }
    }
}

TEST_F(TreeSwap, NeverLeadsCopyDirectoryToWriteElsewhere) {
    fillVictim("source");
    long swaps = 0;
    while (swaps < kSwaps) {
        makeFolder(tree_ / "copy");
        makeFolder(tree_ / "copy/swapped");
        makeLink(tree_ / "canary", tree_ / "link");
        {
            const Swapper swapper(tree_ / "copy/swapped", tree_ / "link");
            while (swapper.swaps() == 0) {
            }
            tryTo([&] { fl::filesystem::copy_directory(tree_.text("source"), tree_.text("copy")); });
            swaps += swapper.swaps();
        }
        ASSERT_EQ(before_, snapshot(tree_ / "canary"));
        for (const char* const name : {"copy", "link"}) {
            tryTo([&] { fl::filesystem::remove_all(tree_.text(name)); });
        }
    }
}

TEST_F(TreeSwap, NeverLeadsCopyDirectoryToReadElsewhere) {
    fillVictim("source");
    makeLink(tree_ / "canary", tree_ / "link");
    const Swapper swapper(tree_ / "source/swapped", tree_ / "link");
    while (swapper.swaps() < kSwaps) {
        tryTo([&] { fl::filesystem::copy_directory(tree_.text("source"), tree_.text("copy")); });
        for (const auto& [name, description] : snapshot(tree_ / "copy")) {
            ASSERT_EQ(std::string::npos, description.find("'canary'")) << name;
        }
        fl::filesystem::remove_all(tree_.text("copy"));
    }
}

}  // namespace
