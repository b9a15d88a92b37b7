#include "tests/e2e/LocalTest.hpp"
#include "tests/support/SmallDisk.hpp"

namespace test {

namespace {

/// A disk that cannot be written, as an example of a failure that has no name of its own here: it passes as
/// the system's number and text.
class LocalReadOnlyDisk : public LocalTest {
protected:
    /// Runs the body in a child, where "disk" is such a disk with a file, a full folder and a link on it.
    void withDisk(const std::function<void()>& body) {
        if (!canMountSmallDisk()) {
            GTEST_SKIP() << "this host lets us mount nothing";
        }
        makeFolder(tree / "disk");
        makeFile(tree / "file", "text");
        runInChild([&] {
            ASSERT_TRUE(mountSmallDisk(tree / "disk", "1m"));
            makeFile(tree / "disk/file", "old");
            makeFolder(tree / "disk/folder");
            makeFile(tree / "disk/folder/inner", "inner");
            makeLink("file", tree / "disk/link");
            ASSERT_TRUE(makeReadOnly(tree / "disk"));
            const TreeSnapshot before = snapshot(tree / "disk");
            body();
            EXPECT_EQ(before, snapshot(tree / "disk"));
        });
    }

    template <typename Operation>
    ::testing::AssertionResult isRefused(Operation operation, const std::string& prefix,
                                         const std::string& path) {
        const auto code = systemError(EROFS);
        return fails(operation, code, prefix + " failed: " + code.message() + ": " + path);
    }
};

TEST_F(LocalReadOnlyDisk, IsReadAsAnyOther) {
    withDisk([&] {
        EXPECT_TRUE(ops.isFile(tree.text("disk/file")));
        EXPECT_EQ(2U, sortedFiles(ops, tree.text("disk"), false).size());
        ops.copy(tree.text("disk/folder"), tree.text("copy"), opc::Fail);
        EXPECT_EQ("inner", contentOf(tree / "copy/inner"));
        EXPECT_NO_THROW(ops.createFolders(tree.text("disk/folder")));
    });
}

TEST_F(LocalReadOnlyDisk, TakesNothingNew) {
    withDisk([&] {
        const std::string path = tree / "disk/new";
        const opc::ustring there = text(path);
        EXPECT_TRUE(isRefused([&](auto&... ec) { ops.createFolder(there, ec...); }, "createFolder", path));
        EXPECT_TRUE(isRefused([&](auto&... ec) { ops.createFolders(there, ec...); }, "createFolders", path));
        EXPECT_TRUE(
            isRefused([&](auto&... ec) { ops.createSymlink(u"x", there, ec...); }, "createSymlink", path));
        EXPECT_TRUE(isRefused([&](auto&... ec) { ops.copy(tree.text("file"), there, opc::Fail, ec...); },
                              "copy", path));
        EXPECT_TRUE(isRefused([&](auto&... ec) { ops.copy(tree.text("file"), there, opc::Replace, ec...); },
                              "copy", path));
        EXPECT_TRUE(reports([&](auto& ec) { ops.rename(tree.text("file"), there, ec); }, systemError(EROFS)));
        EXPECT_TRUE(fails([&](auto&... ec) { return ops.createOutputStream(there, 0, ec...); },
                          errc::io_error, "createOutputStream failed: "));
        EXPECT_EQ("text", contentOf(tree / "file"));
    });
}

TEST_F(LocalReadOnlyDisk, KeepsWhatItHas) {
    withDisk([&] {
        const std::string path = tree / "disk/file";
        const opc::ustring there = text(path);
        const boost::posix_time::ptime time(boost::gregorian::date(2001, 1, 1));
        EXPECT_TRUE(isRefused([&](auto&... ec) { ops.remove(there, ec...); }, "remove", path));
        EXPECT_TRUE(isRefused([&](auto&... ec) { ops.removeAll(there, ec...); }, "removeAll", path));
        EXPECT_TRUE(
            reports([&](auto& ec) { ops.removeAll(tree.text("disk/folder"), ec); }, systemError(EROFS)));
        EXPECT_TRUE(isRefused([&](auto&... ec) { ops.setPermissions(there, opc::Perms::ReadOnly, ec...); },
                              "setPermissions", path));
        EXPECT_TRUE(isRefused([&](auto&... ec) { ops.setLastModifiedTime(there, time, ec...); },
                              "setLastModifiedTime", path));
        EXPECT_TRUE(isRefused([&](auto&... ec) { ops.copy(tree.text("file"), there, opc::Replace, ec...); },
                              "copy", path));
        EXPECT_TRUE(
            reports([&](auto& ec) { ops.rename(there, tree.text("moved"), ec); }, systemError(EROFS)));
    });
}

}  // namespace
}  // namespace test
