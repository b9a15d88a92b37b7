#include "tests/e2e/LocalTest.hpp"
#include "tests/support/SmallDisk.hpp"

namespace test {

namespace {

class LocalRename : public LocalTest {
protected:
    using LocalTest::LocalTest;

    void SetUp() override {
        makeFile(tree / "file", "text", 0640);
        makeFolder(tree / "folder");
        makeFile(tree / "folder/inner", "inner");
        makeFolder(tree / "empty");
        makeLink("folder", tree / "link");
        makeLink("nowhere", tree / "dangling");
    }

    void rename(std::string_view from, std::string_view to) { ops.rename(tree.text(from), tree.text(to)); }

    /// The rename fails in this way, in both styles, and changes nothing.
    void refuse(const opc::ustring& from, const opc::ustring& to, errc::errc_t code,
                const std::string& what) {
        const TreeSnapshot before = snapshot(tree.path());
        EXPECT_TRUE(fails([&](auto&... ec) { ops.rename(from, to, ec...); }, code, "rename failed: " + what));
        EXPECT_EQ(before, snapshot(tree.path()));
    }
    void refuse(const std::string& from, const std::string& to, errc::errc_t code) {
        const TreeSnapshot before = snapshot(tree.path());
        EXPECT_TRUE(reports([&](auto& ec) { ops.rename(text(from), text(to), ec); }, make_error_code(code)));
        EXPECT_EQ(before, snapshot(tree.path()));
    }
};

TEST_F(LocalRename, MovesWhateverThereIs) {
    const TreeSnapshot before = snapshot(tree.path());
    for (const char* const name : {"file", "folder", "link", "dangling"}) {
        rename(name, "moved");
        EXPECT_FALSE(isThere(tree / name)) << name;
        EXPECT_EQ(before.at(name), snapshot(tree.path()).at("moved"));
        rename("moved", std::string("empty/") + name);
    }
    EXPECT_EQ("inner", contentOf(tree / "empty/folder/inner"));
}

TEST_F(LocalRename, OfALinkWithATrailingSeparatorMovesTheLink) {
    rename("link/", "moved/");
    EXPECT_EQ("folder", linkTextOf(tree / "moved"));
    EXPECT_TRUE(isThere(tree / "folder/inner"));
}

TEST_F(LocalRename, ReplacesAFileALinkItselfAndAnEmptyFolder) {
    makeFile(tree / "old", "old");
    rename("file", "old");
    rename("old", "link");
    EXPECT_EQ("text", contentOf(tree / "link"));
    EXPECT_TRUE(isThere(tree / "folder/inner"));
    rename("folder", "empty");
    EXPECT_EQ("inner", contentOf(tree / "empty/inner"));
}

TEST_F(LocalRename, DoesNotReplaceOneKindByTheOtherNorAFullFolder) {
    makeFolder(tree / "other");
    makeFile(tree / "other/kept", "kept");
    refuse(tree / "file", tree / "empty", errc::is_a_directory);
    refuse(tree / "empty", tree / "file", errc::not_a_directory);
    refuse(tree / "folder", tree / "other", errc::directory_not_empty);
    refuse(tree / "link", tree / "empty", errc::is_a_directory);
    refuse(tree / "file", tree / "empty/", errc::is_a_directory);
}

TEST_F(LocalRename, OntoItselfChangesNothing) {
    const TreeSnapshot before = snapshot(tree.path());
    for (const char* const name : {"file", "folder", "link", "dangling"}) {
        rename(name, name);
        rename(name, "empty/../" + std::string(name));
    }
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(LocalRename, WithAnEmptyPathIsRefused) {
    for (const auto& [from, to] :
         {std::pair(tree.text("file"), opc::ustring()), std::pair(opc::ustring(), tree.text("new")),
          std::pair(opc::ustring(), opc::ustring())}) {
        refuse(from, to, errc::invalid_argument, "Empty path not permitted");
    }
}

TEST_F(LocalRename, OfNothingFails) {
    refuse(tree.text("missing"), tree.text("new"), errc::no_such_file_or_directory,
           "Path not found: " + (tree / "missing"));
    refuse(tree.text("missing"), tree.text("file"), errc::no_such_file_or_directory,
           "Path not found: " + (tree / "missing"));
}

TEST_F(LocalRename, ToWhereNothingCanBeFails) {
    refuse(tree / "file", tree / "missing/new", errc::no_such_file_or_directory);
    refuse(tree / "folder", tree / "file/new", errc::not_a_directory);
    refuse(tree / "file", tree / std::string(256, 'x'), errc::filename_too_long);
}

TEST_F(LocalRename, OfAFolderIntoItselfFails) {
    refuse(tree / "folder", tree / "folder/new", errc::invalid_argument);
    refuse(tree / "folder", tree / "link/new", errc::invalid_argument);
}

TEST_F(LocalRename, OfOrToDotsIsRefused) {
    for (const char* const name : {"folder/.", "folder/..", "folder/./", "link/."}) {
        refuse(tree / name, tree / "new", errc::invalid_argument);
        refuse(tree / "file", tree / name, errc::invalid_argument);
    }
    runInChild([&] {
        ASSERT_EQ(0, ::chdir((tree / "folder").c_str()));
        refuse(u".", tree.text("new"), errc::invalid_argument, "Invalid argument: .");
        refuse(u"..", tree.text("new"), errc::invalid_argument, "Invalid argument: ..");
    });
}

TEST_F(LocalRename, OfOrToAPathWithANulFails) {
    const TreeSnapshot before = snapshot(tree.path());
    const opc::ustring nul(u"\0x", 2);
    EXPECT_TRUE(reports([&](auto& ec) { ops.rename(tree.text("file") + nul, tree.text("new"), ec); },
                        make_error_code(errc::invalid_argument)));
    EXPECT_TRUE(reports([&](auto& ec) { ops.rename(tree.text("file"), tree.text("new") + nul, ec); },
                        make_error_code(errc::invalid_argument)));
    EXPECT_EQ(before, snapshot(tree.path()));
}

TEST_F(LocalRename, TakesEveryName) {
    for (const OddName& name : oddNames()) {
        rename("file", "empty/place");
        ops.rename(tree.text("empty/place"), tree.text(u"empty/" + name.asText));
        EXPECT_TRUE(isThere(tree / ("empty/" + name.onDisk))) << name.onDisk;
        ops.rename(tree.text(u"empty/" + name.asText), tree.text("file"));
    }
    EXPECT_EQ("text", contentOf(tree / "file"));
}

/// With many items, where the host makes them quickly.
class LocalRenameAtScale : public LocalRename {
protected:
    LocalRenameAtScale() : LocalRename(fastFolder()) {}
};

TEST_F(LocalRenameAtScale, ReachesBelowTheLimitOfOnePath) {
    makeChain(tree.path(), "folder-with-a-long-name", 300);
    const std::string chain = chainPath("folder-with-a-long-name", 300);
    rename(chain + "/leaf", chain + "/moved");
    rename(chain + "/moved", "out");
    EXPECT_EQ("leaf", contentOf(tree / "out"));
}

TEST_F(LocalRename, WhereNobodyMayWriteFails) {
    runAsOrdinaryUser([] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        makeFolder(own / "locked");
        makeFile(own / "locked/file", "text");
        setMode(own / "locked", 0500);
        const TreeSnapshot before = snapshot(own.path());
        EXPECT_TRUE(reports([&](auto& ec) { local.rename(own.text("locked/file"), own.text("new"), ec); },
                            make_error_code(errc::permission_denied)));
        EXPECT_EQ(before, snapshot(own.path()));
    });
}

/// The same onto another file system, which the host itself refuses.
class LocalRenameAcross : public LocalTest {
protected:
    void SetUp() override {
        if (statusOf(tree.path()).st_dev == statusOf(other.path()).st_dev) {
            GTEST_SKIP() << "one file system holds both places";
        }
        makeFolder(tree / "folder", 0750);
        makeFile(tree / "folder/file", "text", 0640);
        makeFile(tree / "folder/large", someBytes(300'000));
        makeFolder(tree / "folder/inner", 0700);
        makeLink("../file", tree / "folder/inner/link");
        makeLink("nowhere", tree / "dangling");
        makeFile(tree / "file", "text", 0640);
    }

    TempTree other{"/dev/shm"};
};

TEST_F(LocalRenameAcross, MovesFilesLinksAndFolders) {
    const TreeSnapshot before = snapshot(tree.path());
    for (const char* const name : {"file", "folder", "dangling"}) {
        ops.rename(tree.text(name), other.text(name));
        EXPECT_FALSE(isThere(tree / name)) << name;
    }
    EXPECT_EQ(before, snapshot(other.path()));
}

TEST_F(LocalRenameAcross, ReplacesAsOnOneFileSystem) {
    makeFile(other / "file", "old", 0600);
    makeFolder(other / "folder");
    makeLink("x", other / "dangling");
    const TreeSnapshot before = snapshot(tree.path());
    for (const char* const name : {"file", "folder", "dangling"}) {
        ops.rename(tree.text(name), other.text(name));
    }
    EXPECT_EQ(before, snapshot(other.path()));
    EXPECT_EQ(TreeSnapshot(), snapshot(tree.path()));
}

TEST_F(LocalRenameAcross, RefusesAsOnOneFileSystemAndChangesNothing) {
    makeFolder(other / "full");
    makeFile(other / "full/kept", "kept");
    makeFile(other / "file", "old");
    struct Case {
        const char* from;
        const char* to;
        errc::errc_t code;
    };
    const TreeSnapshot here = snapshot(tree.path());
    const TreeSnapshot there = snapshot(other.path());
    for (const Case& test :
         {Case{"folder", "full", errc::directory_not_empty}, Case{"folder", "file", errc::not_a_directory},
          Case{"file", "full", errc::is_a_directory},
          Case{"file", "missing/x", errc::no_such_file_or_directory},
          Case{"missing", "new", errc::no_such_file_or_directory}}) {
        EXPECT_TRUE(reports([&](auto& ec) { ops.rename(tree.text(test.from), other.text(test.to), ec); },
                            make_error_code(test.code)))
            << test.from << " to " << test.to;
        EXPECT_EQ(here, snapshot(tree.path()));
        EXPECT_EQ(there, snapshot(other.path()));
    }
}

TEST_F(LocalRenameAcross, OfAFolderWithAPipeFailsAndChangesNothing) {
    makePipe(tree / "folder/inner/pipe");
    const TreeSnapshot here = snapshot(tree.path());
    EXPECT_TRUE(reports([&](auto& ec) { ops.rename(tree.text("folder"), other.text("folder"), ec); },
                        make_error_code(errc::operation_not_supported)));
    EXPECT_EQ(here, snapshot(tree.path()));
    EXPECT_EQ(TreeSnapshot(), snapshot(other.path()));
}

TEST_F(LocalRenameAcross, ThatFillsTheDiskLeavesBothSidesAsTheyWere) {
    if (!canMountSmallDisk()) {
        GTEST_SKIP() << "this host lets us mount nothing";
    }
    makeFile(tree / "folder/huge", someBytes(4'000'000));
    makeFile(tree / "huge", someBytes(4'000'000));
    makeFolder(tree / "disk");
    runInChild([&] {
        ASSERT_TRUE(mountSmallDisk(tree / "disk", "1m"));
        makeFile(tree / "disk/huge", "old");
        makeFolder(tree / "disk/folder");
        const TreeSnapshot before = snapshot(tree.path());
        for (const char* const name : {"huge", "folder"}) {
            EXPECT_TRUE(reports(
                [&](auto& ec) { ops.rename(tree.text(name), tree.text("disk/" + std::string(name)), ec); },
                systemError(ENOSPC)));
            EXPECT_EQ(before, snapshot(tree.path()));
        }
    });
}

}  // namespace
}  // namespace test
