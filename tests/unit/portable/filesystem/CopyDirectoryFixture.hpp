#pragma once

#include <pkgcore/platform/filesystem/Operations.hpp>

#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/TreeSnapshot.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace test {

/// Copies the folder "a" to "b".
class CopyDirectory : public ::testing::Test {
protected:
    explicit CopyDirectory(const std::string& parent = "/tmp") : tree(parent) {}

    void copy(std::string_view from = "a", std::string_view to = "b") const {
        fl::filesystem::copy_directory(tree.text(from), tree.text(to));
    }

    template <typename Failure>
    bool copyThrows(std::string_view about, std::string_view from = "a", std::string_view to = "b") const {
        return tree.text(about) == failedPath<Failure>([&] { copy(from, to); });
    }

    void fill(const std::string& top) const {
        makeFolder(tree / top, 0750);
        makeFolder(tree / (top + "/inner"), 0755);
        makeFolder(tree / (top + "/inner/empty"), 0700);
        makeFile(tree / (top + "/inner/file"), "text", 0640);
        makeFile(tree / (top + "/file"), someBytes(20'000), 0444);
        makeLink("nowhere", tree / (top + "/dangling"));
        makeLink("inner", tree / (top + "/link"));
    }

    void expectSame() const {
        EXPECT_EQ(snapshot(tree / "a"), snapshot(tree / "b"));
        EXPECT_EQ(modeOf(tree / "a"), modeOf(tree / "b"));
    }

    TempTree tree;
    NoDescriptorLeft noDescriptorLeft;
};

}  // namespace test
