// Making, listing and removing folders.

#include "tests/e2e/VirtualTest.hpp"

namespace test {

namespace {

using Files = std::vector<opc::ustring>;

class VirtualFolders : public VirtualTest {};

TEST_F(VirtualFolders, AreMadeOneByOneOrTogether) {
    ops.createFolder(u"mem://store/a");
    EXPECT_TRUE(ops.isFolder(u"mem://store/a"));
    ops.createFolders(u"mem://store/a/b/c");
    EXPECT_TRUE(ops.isFolder(u"mem://store/a/b/c"));
    EXPECT_NO_THROW(ops.createFolders(u"mem://store/a/b"));
    EXPECT_NO_THROW(ops.createFolders(u"mem://store"));
}

TEST_F(VirtualFolders, AreNotMadeOntoAnythingNorBelowNothing) {
    ops.createFolder(u"mem://store/a");
    write(u"mem://store/file", "text");
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.createFolder(u"mem://store/a", ec...); },
                      errc::file_exists,
                      "createFolder failed: File or folder exists already: mem://store/a"));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.createFolder(u"mem://store/file", ec...); },
                      errc::file_exists,
                      "createFolder failed: File or folder exists already: mem://store/file"));
    EXPECT_TRUE(reports([&](auto&... ec) { return ops.createFolder(u"mem://store/x/y", ec...); },
                        make_error_code(errc::no_such_file_or_directory)));
    EXPECT_TRUE(reports([&](auto&... ec) { return ops.createFolders(u"mem://store/file/y", ec...); },
                        make_error_code(errc::file_exists)));
    EXPECT_EQ(read(u"mem://store/file"), "text");
}

TEST_F(VirtualFolders, ListTheirFilesInTheOrderOfTheNames) {
    makeTree(u"mem://store");
    write(u"mem://store/Z", "");
    write(u"mem://store/z", "");
    write(u"mem://store/10", "");
    EXPECT_EQ(files(u"mem://store", false),
              (Files{u"mem://store/10", u"mem://store/Z", u"mem://store/a", u"mem://store/z"}));
}

TEST_F(VirtualFolders, ListEveryFileBelowAndNoFolder) {
    makeTree(u"mem://store");
    EXPECT_EQ(files(u"mem://store", true),
              (Files{u"mem://store/a", u"mem://store/sub/b", u"mem://store/sub/deep/c"}));
    EXPECT_EQ(files(u"mem://store/sub", true), (Files{u"mem://store/sub/b", u"mem://store/sub/deep/c"}));
}

TEST_F(VirtualFolders, ListingAppendsToWhatIsThere) {
    makeTree(u"mem://store");
    Files found{u"before"};
    ops.getFiles(u"mem://store", found, false);
    EXPECT_EQ(found, (Files{u"before", u"mem://store/a"}));
    ops.getFiles(u"mem://empty", found, true);
    EXPECT_EQ(found, (Files{u"before", u"mem://store/a"}));
}

TEST_F(VirtualFolders, ListingAFileOrNothingIsNotFoundAndKeepsWhatIsThere) {
    makeTree(u"mem://store");
    Files found{u"before"};
    for (const bool recursive : {false, true}) {
        EXPECT_TRUE(
            fails([&](auto&... ec) { return ops.getFiles(u"mem://store/a", found, recursive, ec...); },
                  errc::no_such_file_or_directory, "getFiles failed: " + kMissing + "mem://store/a"));
        EXPECT_TRUE(
            fails([&](auto&... ec) { return ops.getFiles(u"mem://store/x", found, recursive, ec...); },
                  errc::no_such_file_or_directory, "getFiles failed: " + kMissing + "mem://store/x"));
    }
    EXPECT_EQ(found, Files{u"before"});
}

TEST_F(VirtualFolders, OfManyFilesAreListedWhole) {
    constexpr int kCount = 5000;
    for (int i = 0; i < kCount; ++i) {
        const std::string number = std::to_string(10000 + i);
        write(u"mem://store/" + opc::ustring(number.begin(), number.end()), "");
    }
    const Files found = files(u"mem://store", false);
    ASSERT_EQ(found.size(), std::size_t{kCount});
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end()));
    EXPECT_EQ(found.front(), u"mem://store/10000");
    EXPECT_EQ(found.back(), u"mem://store/14999");
}

TEST_F(VirtualFolders, AreRemovedWhenTheyAreEmptyOrWithAllTheyHold) {
    makeTree(u"mem://store");
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.remove(u"mem://store/sub", ec...); },
                      errc::directory_not_empty, "remove failed: The folder is not empty: mem://store/sub"));
    EXPECT_TRUE(ops.isFile(u"mem://store/sub/deep/c"));
    ops.remove(u"mem://store/sub/deep/c");
    ops.remove(u"mem://store/sub/deep");
    EXPECT_FALSE(ops.exists(u"mem://store/sub/deep"));
    ops.removeAll(u"mem://store/sub");
    EXPECT_FALSE(ops.exists(u"mem://store/sub"));
    ops.removeAll(u"mem://store/a");
    EXPECT_EQ(files(u"mem://store", true), Files{});
}

TEST_F(VirtualFolders, ThatAreMissingCannotBeRemoved) {
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.remove(u"mem://store/x", ec...); },
                      errc::no_such_file_or_directory, "remove failed: " + kMissing + "mem://store/x"));
    EXPECT_TRUE(fails([&](auto&... ec) { return ops.removeAll(u"mem://store/x", ec...); },
                      errc::no_such_file_or_directory, "removeAll failed: " + kMissing + "mem://store/x"));
}

TEST_F(VirtualFolders, ThatAreRootsStay) {
    makeTree(u"mem://store");
    EXPECT_TRUE(reports([&](auto&... ec) { return ops.removeAll(u"mem://store", ec...); },
                        make_error_code(errc::operation_not_supported)));
    EXPECT_EQ(files(u"mem://store", true).size(), 3u);
}

}  // namespace

}  // namespace test
