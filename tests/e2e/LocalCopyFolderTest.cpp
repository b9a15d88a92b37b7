#include "tests/e2e/LocalTest.hpp"
#include "tests/support/SmallDisk.hpp"

#include <sys/stat.h>

namespace test {

namespace {

constexpr opc::ExistsMode allModes[] = {opc::Ignore, opc::Fail, opc::Replace};

class LocalCopyFolder : public LocalTest {
protected:
    using LocalTest::LocalTest;

    void SetUp() override {
        makeFolder(tree / "from", 0750);
        makeFile(tree / "from/file", "text", 0640);
        makeFile(tree / "from/empty");
        makeFolder(tree / "from/inner", 0700);
        makeFile(tree / "from/inner/large", someBytes(200'000));
        makeFolder(tree / "from/inner/void");
        makeLink("../file", tree / "from/inner/link");
        makeLink("nowhere", tree / "from/dangling");
        makeLink(".", tree / "from/cycle");
        source = snapshot(tree / "from");
    }

    void copy(std::string_view from, std::string_view to, opc::ExistsMode mode) {
        ops.copy(tree.text(from), tree.text(to), mode);
    }

    /// The copy fails in this way, in both styles, and changes nothing.
    void refuse(std::string_view from, std::string_view to, opc::ExistsMode mode, errc::errc_t code,
                const std::string& what) {
        const TreeSnapshot before = snapshot(tree.path());
        EXPECT_TRUE(fails([&](auto&... ec) { ops.copy(tree.text(from), tree.text(to), mode, ec...); }, code,
                          "copy failed: " + what));
        EXPECT_EQ(before, snapshot(tree.path())) << from << " to " << to;
    }

    TreeSnapshot source;
};

TEST_F(LocalCopyFolder, TakesTheWholeTreeInEveryMode) {
    for (const opc::ExistsMode mode : allModes) {
        const TempTree place;
        ops.copy(tree.text("from"), place.text("to"), mode);
        EXPECT_EQ(source, snapshot(place / "to"));
        EXPECT_EQ(0750U, modeOf(place / "to"));
        ops.copy(tree.text("from/"), place.text("again/"), mode);
        EXPECT_EQ(source, snapshot(place / "again"));
    }
    EXPECT_EQ(source, snapshot(tree / "from"));
}

TEST_F(LocalCopyFolder, TakesPermissionsWhateverTheMask) {
    runInChild([&] {
        ::umask(077);
        copy("from", "to", opc::Fail);
        EXPECT_EQ(source, snapshot(tree / "to"));
        EXPECT_EQ(0750U, modeOf(tree / "to"));
    });
}

TEST_F(LocalCopyFolder, ThatIsReadOnlyIsCopiedWithAllThatItHolds) {
    runAsOrdinaryUser([] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        makeFolder(own / "from");
        makeFolder(own / "from/inner");
        makeFile(own / "from/inner/file", "text");
        setMode(own / "from/inner", 0500);
        setMode(own / "from", 0500);
        local.copy(own.text("from"), own.text("to"), opc::Fail);
        EXPECT_EQ(snapshot(own / "from"), snapshot(own / "to"));
        EXPECT_EQ(0500U, modeOf(own / "to"));
    });
}

TEST_F(LocalCopyFolder, ToAnExistingDestinationFailsWhereThatIsAskedFor) {
    makeFolder(tree / "folder");
    makeFile(tree / "file", "old");
    makeLink("nowhere", tree / "dangling");
    for (const char* const to : {"folder", "file", "dangling", "from"}) {
        refuse("from", to, opc::Fail, errc::file_exists, "Destination exists: " + (tree / to));
    }
}

TEST_F(LocalCopyFolder, IsMergedIntoAnExistingOneUnlessAskedOtherwise) {
    makeFolder(tree / "to", 0700);
    makeFile(tree / "to/other", "other");
    makeFolder(tree / "to/inner");
    makeFile(tree / "to/inner/mine", "mine");
    for (const opc::ExistsMode mode : {opc::Ignore, opc::ExistsMode(42)}) {
        const TempTree place;
        makeFolder(place / "to", 0700);
        makeFile(place / "to/other", "other");
        makeFolder(place / "to/inner", 0755);
        makeFile(place / "to/inner/mine", "mine");
        ops.copy(tree.text("from"), place.text("to"), mode);
        TreeSnapshot merged = snapshot(place / "to");
        EXPECT_EQ("file 0644 'other'", merged["other"]);
        EXPECT_EQ("file 0644 'mine'", merged["inner/mine"]);
        for (const char* const name :
             {"file", "empty", "inner/large", "inner/void", "inner/link", "dangling"}) {
            EXPECT_EQ(source[name], merged[name]) << name;
        }
    }
}

TEST_F(LocalCopyFolder, ThatMeetsAFileOfTheSameNameFailsAndKeepsThatFile) {
    makeFolder(tree / "to");
    makeFile(tree / "to/file", "mine", 0600);
    boost::system::error_code ec;
    ops.copy(tree.text("from"), tree.text("to"), opc::Ignore, ec);
    EXPECT_EQ(make_error_code(errc::file_exists), ec);
    EXPECT_EQ("mine", contentOf(tree / "to/file"));
    EXPECT_EQ(0600U, modeOf(tree / "to/file"));
    EXPECT_EQ(source, snapshot(tree / "from"));
}

TEST_F(LocalCopyFolder, ThatMeetsAnotherKindOfTheSameNameFailsAndKeepsIt) {
    makeFolder(tree / "outside");
    for (const char* const name : {"inner", "file", "dangling"}) {
        for (const bool asLink : {false, true}) {
            const TempTree place;
            makeFolder(place / "to");
            if (asLink) {
                makeLink(tree / "outside", place / "to/" + name);
            } else if (std::string(name) == "inner") {
                makeFile(place / "to/inner", "mine");
            } else {
                makeFolder(place / "to/" + name);
            }
            const std::string before = snapshot(place / "to").at(name);
            boost::system::error_code ec;
            ops.copy(tree.text("from"), place.text("to"), opc::Ignore, ec);
            EXPECT_TRUE(ec.failed()) << name << asLink;
            EXPECT_EQ(before, snapshot(place / "to").at(name));
        }
    }
    EXPECT_EQ(TreeSnapshot(), snapshot(tree / "outside"));
}

TEST_F(LocalCopyFolder, OntoAFileFailsInTheMergingMode) {
    makeFile(tree / "to", "mine");
    refuse("from", "to", opc::Ignore, errc::not_a_directory, "Not a directory: " + (tree / "to"));
}

TEST_F(LocalCopyFolder, ReplacesWhateverIsAtTheDestination) {
    makeFolder(tree / "outside");
    makeFile(tree / "outside/kept", "kept");
    for (const char* const kind : {"folder", "file", "link", "dangling"}) {
        const TempTree place;
        if (std::string(kind) == "folder") {
            makeFolder(place / "to");
            makeFile(place / "to/old", "old");
            makeFolder(place / "to/inner");
            makeFile(place / "to/inner/old", "old");
        } else if (std::string(kind) == "file") {
            makeFile(place / "to", "old");
        } else {
            makeLink(std::string(kind) == "link" ? tree / "outside" : "nowhere", place / "to");
        }
        ops.copy(tree.text("from"), place.text("to"), opc::Replace);
        EXPECT_EQ(source, snapshot(place / "to")) << kind;
        EXPECT_TRUE(S_ISDIR(statusOf(place / "to").st_mode)) << kind;
    }
    EXPECT_EQ((TreeSnapshot{{"kept", "file 0644 'kept'"}}), snapshot(tree / "outside"));
}

TEST_F(LocalCopyFolder, IntoItselfOrBelowIsRefusedBeforeAnythingIsWritten) {
    makeLink("from/inner", tree / "inside");
    for (const char* const to :
         {"from/new", "from/inner/new", "from/./new", "from/inner/../new", "inside/new"}) {
        for (const opc::ExistsMode mode : allModes) {
            refuse("from", to, mode, errc::invalid_argument, "Invalid argument: " + (tree / to));
        }
    }
    refuse("from", "from", opc::Ignore, errc::invalid_argument, "Invalid argument: " + (tree / "from"));
    refuse("from", "from/inner", opc::Ignore, errc::invalid_argument,
           "Invalid argument: " + (tree / "from/inner"));
    refuse("from", "from/.", opc::Ignore, errc::invalid_argument, "Invalid argument: " + (tree / "from/."));
}

TEST_F(LocalCopyFolder, NextToItselfUnderALongerNameIsFine) {
    copy("from", "from2", opc::Fail);
    EXPECT_EQ(source, snapshot(tree / "from2"));
}

TEST_F(LocalCopyFolder, OfALinkToAFolderMakesALink) {
    makeLink("from", tree / "link");
    copy("link/", "to", opc::Fail);
    EXPECT_EQ("link -> from", snapshot(tree.path()).at("to"));
}

TEST_F(LocalCopyFolder, ToWhereNoneCanBeFails) {
    makeFile(tree / "file", "text");
    for (const opc::ExistsMode mode : allModes) {
        refuse("from", "missing/to", mode, errc::no_such_file_or_directory,
               "Path not found: " + (tree / "missing/to"));
        refuse("from", "file/to", mode, errc::not_a_directory, "Not a directory: " + (tree / "file/to"));
        EXPECT_TRUE(fails([&](auto&... ec) { ops.copy(tree.text("from"), u"", mode, ec...); },
                          errc::no_such_file_or_directory, "copy failed: Path not found"));
    }
}

TEST_F(LocalCopyFolder, ThatHoldsAPipeFailsAndDoesNotWait) {
    makePipe(tree / "from/inner/pipe");
    EXPECT_TRUE(reports([&](auto& ec) { ops.copy(tree.text("from"), tree.text("to"), opc::Fail, ec); },
                        make_error_code(errc::operation_not_supported)));
}

TEST_F(LocalCopyFolder, ThatHoldsWhatMayNotBeReadFails) {
    runAsOrdinaryUser([] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        makeFolder(own / "from");
        makeFolder(own / "from/locked");
        makeFile(own / "from/locked/file", "text");
        setMode(own / "from/locked", 0);
        EXPECT_TRUE(reports([&](auto& ec) { local.copy(own.text("from"), own.text("to"), opc::Fail, ec); },
                            make_error_code(errc::permission_denied)));
    });
}

TEST_F(LocalCopyFolder, ThatFillsTheDiskFailsAndKeepsTheSource) {
    if (!canMountSmallDisk()) {
        GTEST_SKIP() << "this host lets us mount nothing";
    }
    for (int number = 0; number < 10; ++number) {
        makeFile(tree / ("from/large" + std::to_string(number)), someBytes(200'000));
    }
    makeFolder(tree / "disk");
    runInChild([&] {
        ASSERT_TRUE(mountSmallDisk(tree / "disk", "1m"));
        const TreeSnapshot before = snapshot(tree / "from");
        EXPECT_TRUE(
            reports([&](auto& ec) { ops.copy(tree.text("from"), tree.text("disk/to"), opc::Fail, ec); },
                    systemError(ENOSPC)));
        EXPECT_EQ(before, snapshot(tree / "from"));
        for (const auto& [name, what] : snapshot(tree / "disk/to")) {
            EXPECT_EQ(before.at(name), what)
                << "a file of a failed copy is there whole or not at all: " << name;
        }
    });
}

TEST_F(LocalCopyFolder, TakesEveryName) {
    makeFolder(tree / "odd");
    for (const OddName& name : oddNames()) {
        makeFolder(tree / "odd/" + name.onDisk);
        makeFile(tree / "odd/" + name.onDisk + "/" + name.onDisk, "text");
    }
    copy("odd", "to", opc::Fail);
    EXPECT_EQ(snapshot(tree / "odd"), snapshot(tree / "to"));
}

/// With many items, where the host makes them quickly.
class LocalCopyFolderAtScale : public LocalCopyFolder {
protected:
    LocalCopyFolderAtScale() : LocalCopyFolder(fastFolder()) {}
};

TEST_F(LocalCopyFolderAtScale, NeedsFewDescriptorsForAnyDepth) {
    makeChain(tree / "from", "ab", 900);
    runInChild([&] {
        limitResource(RLIMIT_NOFILE, 256);
        copy("from", "to", opc::Fail);
    });
    EXPECT_EQ("leaf", contentOf(tree / ("to/" + chainPath("ab", 900) + "/leaf")));
}

TEST_F(LocalCopyFolderAtScale, GoesBelowTheLimitOfOnePath) {
    makeChain(tree / "from", "ab", 3'000);
    copy("from", "to", opc::Fail);
    EXPECT_TRUE(ops.isFile(tree.text("to/" + chainPath("ab", 3'000) + "/leaf")));
    copy("to/" + chainPath("ab", 2'000), "part", opc::Fail);
    EXPECT_TRUE(ops.isFile(tree.text("part/" + chainPath("ab", 1'000) + "/leaf")));
}

}  // namespace
}  // namespace test
