#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/Swapper.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

using test::makeFile;
using test::makeFolder;
using test::makeLink;
using test::snapshot;
using test::Swapper;
using test::TempTree;

const long kSwaps = test::Swapper::wanted();
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

TEST_F(TreeSwap, NeverLeadsAListingToShowWhatIsElsewhere) {
    makeFile(tree / "canary/inner/only here");
    fillVictim("top");
    makeLink(tree / "canary", tree / "link");
    const Swapper swapper(tree / "top/swapped", tree / "link");
    while (swapper.swaps() < kSwaps) {
        std::vector<opc::ustring> files;
        boost::system::error_code error;
        opc::LocalFileSystemOps().getFiles(tree.text("top"), files, true, error);
        for (const opc::ustring& file : files) ASSERT_EQ(opc::ustring::npos, file.find(u"only here"));
    }
}

}  // namespace
