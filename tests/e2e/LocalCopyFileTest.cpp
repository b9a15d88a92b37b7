#include "tests/e2e/LocalTest.hpp"
#include "tests/support/SmallDisk.hpp"

#include <sys/stat.h>

namespace test {

namespace {

constexpr opc::ExistsMode allModes[] = {opc::Ignore, opc::Fail, opc::Replace};

class LocalCopy : public LocalTest {
protected:
    using LocalTest::LocalTest;

    void copy(std::string_view from, std::string_view to, opc::ExistsMode mode = opc::Fail) {
        ops.copy(tree.text(from), tree.text(to), mode);
    }

    /// The copy fails in this way, in both styles, and changes nothing.
    void refuse(const opc::ustring& from, const opc::ustring& to, opc::ExistsMode mode, errc::errc_t code,
                const std::string& what) {
        const TreeSnapshot before = snapshot(tree.path());
        EXPECT_TRUE(
            fails([&](auto&... ec) { ops.copy(from, to, mode, ec...); }, code, "copy failed: " + what));
        EXPECT_EQ(before, snapshot(tree.path()));
    }
};

TEST_F(LocalCopy, OfAMissingSourceFailsInEveryMode) {
    makeFile(tree / "file");
    for (const opc::ExistsMode mode : allModes) {
        refuse(tree.text("missing"), tree.text("to"), mode, errc::no_such_file_or_directory,
               "Source does not exist: " + (tree / "missing"));
        refuse(tree.text("missing"), tree.text("file"), mode, errc::no_such_file_or_directory,
               "Source does not exist: " + (tree / "missing"));
        refuse(u"", tree.text("to"), mode, errc::no_such_file_or_directory, "Source does not exist: ");
    }
}

TEST_F(LocalCopy, TakesContentOfEverySize) {
    for (const std::size_t size :
         {0U, 1U, 4'095U, 4'096U, 4'097U, 65'535U, 65'536U, 65'537U, 1'048'577U, 20'000'000U}) {
        const TempTree place;
        makeFile(place / "from", someBytes(size));
        ops.copy(place.text("from"), place.text("to"), opc::Fail);
        EXPECT_TRUE(contentOf(place / "from") == contentOf(place / "to")) << size;
    }
}

TEST_F(LocalCopy, TakesTheNinePermissionBitsWhateverTheMask) {
    runInChild([&] {
        ::umask(077);
        for (const unsigned mode : {0644U, 0600U, 0755U, 0777U, 0444U, 0400U, 0666U}) {
            for (const opc::ExistsMode exists : allModes) {
                const TempTree place;
                makeFile(place / "from", "text", mode);
                ops.copy(place.text("from"), place.text("to"), exists);
                EXPECT_EQ(mode, modeOf(place / "to")) << std::oct << mode;
            }
        }
    });
}

TEST_F(LocalCopy, TakesNoRightToActAsTheOwner) {
    for (const unsigned special : {04000U, 02000U, 01000U, 07000U}) {
        for (const opc::ExistsMode mode : {opc::Fail, opc::Replace}) {
            const TempTree place;
            makeFile(place / "from", "text");
            setMode(place / "from", special | 0755U);
            ops.copy(place.text("from"), place.text("to"), mode);
            EXPECT_EQ(0755U, modeOf(place / "to"));
        }
    }
}

TEST_F(LocalCopy, OntoAFileFailsUnlessItIsToBeReplaced) {
    makeFile(tree / "from", "new", 0640);
    makeFile(tree / "to", "old");
    for (const opc::ExistsMode mode : {opc::Fail, opc::Ignore, opc::ExistsMode(7)}) {
        refuse(tree.text("from"), tree.text("to"), mode, errc::file_exists, "File exists: " + (tree / "to"));
    }
    copy("from", "to", opc::Replace);
    EXPECT_EQ((TreeSnapshot{{"from", "file 0640 'new'"}, {"to", "file 0640 'new'"}}), snapshot(tree.path()));
}

TEST_F(LocalCopy, ReplacesLongWithShortAndAReadOnlyFile) {
    makeFile(tree / "from", "new");
    makeFile(tree / "to", someBytes(100'000), 0444);
    copy("from", "to", opc::Replace);
    EXPECT_EQ((TreeSnapshot{{"from", "file 0644 'new'"}, {"to", "file 0644 'new'"}}), snapshot(tree.path()));
}

TEST_F(LocalCopy, OfAFileOntoItselfFailsAndKeepsIt) {
    makeFile(tree / "file", "text");
    ASSERT_EQ(0, ::link((tree / "file").c_str(), (tree / "hard").c_str()));
    for (const opc::ExistsMode mode : allModes) {
        for (const char* const to : {"file", "hard", "./file", "file/"}) {
            refuse(tree.text("file"), tree.text(to), mode, errc::file_exists, "File exists: " + (tree / to));
        }
    }
}

TEST_F(LocalCopy, OntoAFolderFails) {
    makeFile(tree / "file", "text");
    makeFolder(tree / "folder");
    for (const char* const to : {"folder", "folder/"}) {
        refuse(tree.text("file"), tree.text(to), opc::Fail, errc::file_exists, "File exists: " + (tree / to));
        refuse(tree.text("file"), tree.text(to), opc::Replace, errc::is_a_directory,
               "File is a directory: " + (tree / to));
    }
}

TEST_F(LocalCopy, OntoALinkReplacesTheLinkOrFails) {
    makeFile(tree / "file", "new");
    makeFile(tree / "target", "old");
    makeLink("target", tree / "link");
    makeLink("nowhere", tree / "dangling");
    makeLink("file", tree / "toSource");
    for (const char* const to : {"link", "link/", "dangling", "toSource"}) {
        refuse(tree.text("file"), tree.text(to), opc::Fail, errc::file_exists, "File exists: " + (tree / to));
        refuse(tree.text("file"), tree.text(to), opc::Ignore, errc::file_exists,
               "File exists: " + (tree / to));
    }
    for (const char* const to : {"link", "dangling", "toSource"}) {
        copy("file", to, opc::Replace);
        EXPECT_EQ("file 0644 'new'", snapshot(tree.path()).at(to));
    }
    EXPECT_EQ("old", contentOf(tree / "target"));
    EXPECT_EQ("new", contentOf(tree / "file"));
    EXPECT_FALSE(isThere(tree / "nowhere"));
}

TEST_F(LocalCopy, ToWhereNoFileCanBeFails) {
    makeFile(tree / "file", "text");
    for (const opc::ExistsMode mode : allModes) {
        refuse(tree.text("file"), tree.text("missing/to"), mode, errc::no_such_file_or_directory,
               "Path not found: " + (tree / "missing/to"));
        refuse(tree.text("file"), tree.text("file/to"), mode, errc::not_a_directory,
               "Not a directory: " + (tree / "file/to"));
        refuse(tree.text("file"), u"", mode, errc::no_such_file_or_directory, "Path not found");
        refuse(tree.text("file"), tree.text(std::string(256, 'x')), mode, errc::filename_too_long,
               "File name too long: " + (tree / std::string(256, 'x')));
    }
}

TEST_F(LocalCopy, OfOrToAPathWithANulFails) {
    makeFile(tree / "file", "text");
    const opc::ustring nul(u"\0x", 2);
    for (const opc::ExistsMode mode : allModes) {
        EXPECT_TRUE(reports([&](auto& ec) { ops.copy(tree.text("file") + nul, tree.text("to"), mode, ec); },
                            make_error_code(errc::invalid_argument)));
        EXPECT_TRUE(reports([&](auto& ec) { ops.copy(tree.text("file"), tree.text("to") + nul, mode, ec); },
                            make_error_code(errc::invalid_argument)));
    }
    EXPECT_EQ((TreeSnapshot{{"file", "file 0644 'text'"}}), snapshot(tree.path()));
}

TEST_F(LocalCopy, OfPipesAndDevicesDoesNothingAndDoesNotWait) {
    makePipe(tree / "pipe");
    for (const opc::ExistsMode mode : allModes) {
        EXPECT_NO_THROW(copy("pipe", "to", mode));
        EXPECT_NO_THROW(ops.copy(u"/dev/zero", tree.text("to"), mode));
    }
    EXPECT_FALSE(isThere(tree / "to"));
}

TEST_F(LocalCopy, OntoAPipeIsRefusedAndDoesNotWait) {
    makeFile(tree / "file", "text");
    makePipe(tree / "pipe");
    refuse(tree.text("file"), tree.text("pipe"), opc::Fail, errc::file_exists,
           "File exists: " + (tree / "pipe"));
    refuse(tree.text("file"), tree.text("pipe"), opc::Replace, errc::operation_not_supported,
           "Invalid operation: " + (tree / "pipe"));
}

TEST_F(LocalCopy, TakesTheContentOfFilesThatReportNoSizeOrTooMuch) {
    for (const char* const file :
         {"/proc/version", "/proc/filesystems", "/proc/self/limits", "/sys/devices/system/cpu/possible"}) {
        if (!isThere(file)) {
            continue;  // not every host mounts /sys
        }
        for (const opc::ExistsMode mode : {opc::Fail, opc::Replace}) {
            const TempTree place;
            ops.copy(text(file), place.text("to"), mode);
            EXPECT_EQ(contentOf(file), contentOf(place / "to")) << file;
            EXPECT_FALSE(contentOf(place / "to").empty()) << file;
        }
    }
}

TEST_F(LocalCopy, KeepsHoles) {
    constexpr off_t mebi = 1'048'576;
    struct Case {
        off_t size;
        off_t island;
        std::size_t length;
    };
    for (const char* const parent : {"/tmp", "/dev/shm"}) {
        for (const Case& test : {Case{64 * mebi, 32 * mebi, 10'000}, Case{64 * mebi, 0, 1},
                                 Case{64 * mebi, 64 * mebi - 1, 1}, Case{64 * mebi, 0, 0}}) {
            const TempTree place{parent};
            makeSparseFile(place / "from", test.size, test.island, someBytes(test.length));
            if (statusOf(place / "from").st_blocks * 512 > mebi) {
                continue;  // this file system has no holes to keep
            }
            for (const opc::ExistsMode mode : {opc::Fail, opc::Replace}) {
                ops.copy(place.text("from"), place.text("to"), mode);
                EXPECT_LT(statusOf(place / "to").st_blocks * 512, mebi) << parent << ' ' << test.island;
                EXPECT_TRUE(contentOf(place / "from") == contentOf(place / "to"))
                    << parent << ' ' << test.island;
                ASSERT_EQ(0, ::unlink((place / "to").c_str()));
            }
        }
    }
}

TEST_F(LocalCopy, OfAFileThatMayNotBeReadLeavesTheDestinationAsItWas) {
    runAsOrdinaryUser([] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        makeFile(own / "from", "new");
        makeFile(own / "to", "old");
        setMode(own / "from", 0200);
        const TreeSnapshot before = snapshot(own.path());
        EXPECT_TRUE(
            fails([&](auto&... ec) { local.copy(own.text("from"), own.text("to"), opc::Replace, ec...); },
                  errc::permission_denied, "copy failed: Access denied: " + (own / "from")));
        EXPECT_TRUE(
            fails([&](auto&... ec) { local.copy(own.text("from"), own.text("new"), opc::Fail, ec...); },
                  errc::permission_denied, "copy failed: Access denied: " + (own / "from")));
        EXPECT_EQ(before, snapshot(own.path()));
    });
}

TEST_F(LocalCopy, WhereNobodyMayWriteFails) {
    runAsOrdinaryUser([] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        makeFile(own / "file", "text");
        makeFolder(own / "locked");
        makeFile(own / "locked/old", "old");
        setMode(own / "locked", 0500);
        const TreeSnapshot before = snapshot(own.path());
        for (const opc::ExistsMode mode : allModes) {
            EXPECT_TRUE(
                fails([&](auto&... ec) { local.copy(own.text("file"), own.text("locked/to"), mode, ec...); },
                      errc::permission_denied, "copy failed: Access denied: " + (own / "locked/to")));
        }
        boost::system::error_code ec;
        local.copy(own.text("file"), own.text("locked/old"), opc::Replace, ec);
        EXPECT_EQ(errc::permission_denied, ec);
        EXPECT_EQ(before, snapshot(own.path()));
    });
}

TEST_F(LocalCopy, ThatHitsTheLimitOfFileSizeLeavesEverythingAsItWas) {
    makeFile(tree / "from", someBytes(1'000'000));
    makeFile(tree / "old", "old content");
    runInChild([&] {
        limitFileSize(65'536);
        const TreeSnapshot before = snapshot(tree.path());
        EXPECT_TRUE(
            reports([&](auto& ec) { ops.copy(tree.text("from"), tree.text("old"), opc::Replace, ec); },
                    systemError(EFBIG)));
        EXPECT_TRUE(reports([&](auto& ec) { ops.copy(tree.text("from"), tree.text("new"), opc::Fail, ec); },
                            systemError(EFBIG)));
        EXPECT_EQ(before, snapshot(tree.path()));
    });
}

TEST_F(LocalCopy, ThatFillsTheDiskLeavesEverythingAsItWas) {
    if (!canMountSmallDisk()) {
        GTEST_SKIP() << "this host lets us mount nothing";
    }
    makeFile(tree / "from", someBytes(4'000'000));
    makeSparseFile(tree / "sparse", 100'000'000, 90'000'000, someBytes(4'000'000));
    makeFolder(tree / "disk");
    runInChild([&] {
        ASSERT_TRUE(mountSmallDisk(tree / "disk", "1m"));
        makeFile(tree / "disk/old", "old content");
        const TreeSnapshot before = snapshot(tree / "disk");
        for (const char* const from : {"from", "sparse"}) {
            const auto code = systemError(ENOSPC);
            const std::string message = "copy failed: " + code.message() + ": ";
            EXPECT_TRUE(fails(
                [&](auto&... ec) { ops.copy(tree.text(from), tree.text("disk/old"), opc::Replace, ec...); },
                code, message + (tree / "disk/old")));
            EXPECT_TRUE(fails(
                [&](auto&... ec) { ops.copy(tree.text(from), tree.text("disk/new"), opc::Fail, ec...); },
                code, message + (tree / "disk/new")));
            EXPECT_EQ(before, snapshot(tree / "disk"));
        }
    });
}

TEST_F(LocalCopy, ToAnotherFileSystemTakesTheSame) {
    const TempTree other{"/dev/shm"};
    makeFile(tree / "from", someBytes(3'000'000), 0640);
    ops.copy(tree.text("from"), other.text("to"), opc::Fail);
    ops.copy(other.text("to"), tree.text("back"), opc::Replace);
    EXPECT_TRUE(contentOf(tree / "from") == contentOf(tree / "back"));
    EXPECT_EQ(0640U, modeOf(other / "to"));
}

TEST_F(LocalCopy, TakesEveryName) {
    makeFile(tree / "from", "text");
    for (const OddName& name : oddNames()) {
        ops.copy(tree.text("from"), tree.text(name.asText), opc::Fail);
        ops.copy(tree.text("from"), tree.text(name.asText), opc::Replace);
        EXPECT_EQ("text", contentOf(tree / name.onDisk)) << name.onDisk;
        const TempTree place;
        ops.copy(tree.text(name.asText), place.text("to"), opc::Replace);
        EXPECT_EQ("text", contentOf(place / "to")) << name.onDisk;
    }
}

/// With many items, where the host makes them quickly.
class LocalCopyAtScale : public LocalCopy {
protected:
    LocalCopyAtScale() : LocalCopy(fastFolder()) {}
};

TEST_F(LocalCopyAtScale, ReachesBelowTheLimitOfOnePath) {
    makeChain(tree.path(), "folder-with-a-long-name", 300);
    const std::string chain = chainPath("folder-with-a-long-name", 300);
    for (const opc::ExistsMode mode : {opc::Fail, opc::Replace}) {
        copy(chain + "/leaf", chain + "/copy" + std::to_string(mode), mode);
        copy(chain + "/copy" + std::to_string(mode), "out" + std::to_string(mode), mode);
        EXPECT_EQ("leaf", contentOf(tree / ("out" + std::to_string(mode))));
    }
    copy(chain + "/leaf", "out1", opc::Replace);
}

TEST_F(LocalCopy, OfALinkMakesALinkAndNeverReplaces) {
    makeFile(tree / "file", "text");
    makeFolder(tree / "folder");
    makeLink("folder", tree / "toFolder");
    makeLink("nowhere/at all", tree / "dangling");
    makeLink("caf\xE9", tree / "odd");
    for (const opc::ExistsMode mode : allModes) {
        const TempTree place;
        ops.copy(tree.text("toFolder"), place.text("a"), mode);
        ops.copy(tree.text("toFolder/"), place.text("b/"), mode);
        ops.copy(tree.text("dangling"), place.text("c"), mode);
        ops.copy(tree.text("odd"), place.text("d"), mode);
        EXPECT_EQ((TreeSnapshot{{"a", "link -> folder"},
                                {"b", "link -> folder"},
                                {"c", "link -> nowhere/at all"},
                                {"d", "link -> caf\xE9"}}),
                  snapshot(place.path()));
        for (const char* const to : {"file", "folder", "dangling"}) {
            refuse(tree.text("toFolder"), tree.text(to), mode, errc::file_exists,
                   "File exists: " + (tree / to));
        }
        refuse(tree.text("toFolder"), tree.text("missing/to"), mode, errc::no_such_file_or_directory,
               "Path not found: " + (tree / "missing/to"));
    }
}

}  // namespace
}  // namespace test
