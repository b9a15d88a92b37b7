#include "tests/e2e/LocalTest.hpp"

#include <dirent.h>
#include <pthread.h>

#include <functional>
#include <memory>

namespace test {

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

struct CloseListing {
    void operator()(DIR* listing) const { ::closedir(listing); }
};

/// What a recursive listing has to deliver, in the order in which the host hands out the entries.
void addExpected(const std::string& folder, std::vector<opc::ustring>& files) {
    const std::unique_ptr<DIR, CloseListing> listing(::opendir(folder.c_str()));
    while (const dirent* const entry = ::readdir(listing.get())) {
        const std::string name = entry->d_name;
        const mode_t kind = statusOf(folder + '/' + name).st_mode & S_IFMT;
        if (kind == S_IFREG || kind == S_IFLNK) {
            files.push_back(text(folder + '/' + name));
        } else if (kind == S_IFDIR && name != "." && name != "..") {
            addExpected(folder + '/' + name, files);
        }
    }
}

class LocalListing : public LocalTest {
protected:
    using LocalTest::LocalTest;

    std::vector<opc::ustring> list(const opc::ustring& folder, bool recursive = false) {
        return sortedFiles(ops, folder, recursive);
    }
    std::vector<opc::ustring> list(std::string_view name, bool recursive = false) {
        return list(tree.text(name), recursive);
    }
};

TEST_F(LocalListing, HoldsFilesAndLinksOfTheFolderItselfAndNothingElse) {
    makeFile(tree / "file");
    makeFolder(tree / "folder");
    makeFile(tree / "folder/inner");
    makeLink("file", tree / "link");
    makeLink("folder", tree / "linkToFolder");
    makeLink("nowhere", tree / "dangling");
    makePipe(tree / "pipe");
    EXPECT_THAT(list(""), ElementsAre(tree.text("dangling"), tree.text("file"), tree.text("link"),
                                      tree.text("linkToFolder")));
}

TEST_F(LocalListing, OfAnEmptyFolderIsEmpty) {
    EXPECT_THAT(list(""), IsEmpty());
    EXPECT_THAT(list("", true), IsEmpty());
}

TEST_F(LocalListing, OfAnEmptyPathIsEmptyAndNoFailure) {
    std::vector<opc::ustring> files{u"old"};
    boost::system::error_code ec;
    ops.getFiles(u"", files, true, ec);
    EXPECT_EQ(boost::system::error_code(), ec);
    EXPECT_THAT(files, ElementsAre(u"old"));
    EXPECT_NO_THROW(ops.getFiles(u"", files, false));
}

TEST_F(LocalListing, IsAppendedToWhatIsThere) {
    makeFile(tree / "file");
    std::vector<opc::ustring> files{u"old"};
    ops.getFiles(text(tree.path()), files, false);
    EXPECT_THAT(files, ElementsAre(u"old", tree.text("file")));
}

TEST_F(LocalListing, GoesDownWhereASubfolderStandsAndNeverThroughALink) {
    for (const char* const folder : {"a", "a/b", "a/c", "d", "e", "e/f", "e/f/g"}) {
        makeFolder(tree / folder);
        makeFile(tree / folder + "/one");
        makeFile(tree / folder + "/two");
    }
    makeFile(tree / "top");
    makeLink("..", tree / "a/b/up");
    makeLink("a", tree / "toFolder");
    std::vector<opc::ustring> expected;
    addExpected(tree.path(), expected);
    ASSERT_EQ(17U, expected.size());
    std::vector<opc::ustring> files;
    ops.getFiles(text(tree.path()), files, true);
    EXPECT_EQ(expected, files);
}

TEST_F(LocalListing, EndsInACycleOfLinks) {
    makeFolder(tree / "a");
    makeLink("..", tree / "a/up");
    makeLink(".", tree / "a/self");
    makeLink("a", tree / "again");
    makeLink("loop", tree / "loop");
    EXPECT_EQ(4U, list("", true).size());
}

TEST_F(LocalListing, FollowsALinkThatIsTheFolderItself) {
    makeFolder(tree / "folder");
    makeFile(tree / "folder/file");
    makeLink("folder", tree / "link");
    EXPECT_THAT(list("link"), ElementsAre(tree.text("link/file")));
    EXPECT_THAT(list("link/", true), ElementsAre(tree.text("link/file")));
}

TEST_F(LocalListing, SpellsPathsTidily) {
    makeFolder(tree / "folder");
    makeFile(tree / "folder/file");
    EXPECT_THAT(list("folder/"), ElementsAre(tree.text("folder/file")));
    EXPECT_THAT(list("/folder///"), ElementsAre(tree.text("folder/file")));
    EXPECT_THAT(list("folder/.."), IsEmpty());
    EXPECT_THAT(list("folder/../folder"), ElementsAre(tree.text("folder/../folder/file")));
}

TEST_F(LocalListing, OfARelativeFolderIsRelative) {
    makeFolder(tree / "folder");
    makeFile(tree / "folder/file");
    runInChild([&] {
        ASSERT_EQ(0, ::chdir(tree.path().c_str()));
        EXPECT_THAT(list(opc::ustring(u"folder")), ElementsAre(u"folder/file"));
        EXPECT_THAT(list(opc::ustring(u"."), true), ElementsAre(u"./folder/file"));
    });
}

TEST_F(LocalListing, OfTheRootHasOneSeparatorInFront) {
    for (const opc::ustring& path : list(opc::ustring(u"/"))) {
        EXPECT_TRUE(path.size() > 1 && path[0] == u'/' && path[1] != u'/') << ::testing::PrintToString(path);
    }
}

TEST_F(LocalListing, ShowsEveryNameAsItIsWritten) {
    std::vector<opc::ustring> expected;
    for (const OddName& name : oddNames()) {
        makeFile(tree / name.onDisk);
        expected.push_back(tree.text(name.asText));
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, list(""));
}

TEST_F(LocalListing, GoesIntoFoldersOfEveryName) {
    std::vector<opc::ustring> expected;
    for (const OddName& name : oddNames()) {
        makeFolder(tree / name.onDisk);
        makeFile(tree / name.onDisk + "/f");
        expected.push_back(tree.text(name.asText) + u"/f");
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, list("", true));
}

/// With many items, where the host makes them quickly.
class LocalListingAtScale : public LocalListing {
protected:
    LocalListingAtScale() : LocalListing(fastFolder()) {}
};

TEST_F(LocalListingAtScale, ShowsEachOfManyEntriesOnce) {
    std::vector<opc::ustring> expected;
    for (int number = 10'000; number < 15'000; ++number) {
        const std::string name = "file-with-a-name-of-some-length-" + std::to_string(number);
        makeFile(tree / name);
        expected.push_back(tree.text(name));
    }
    EXPECT_EQ(expected, list(""));
    EXPECT_EQ(expected, list("", true));
}

TEST_F(LocalListing, FailsForWhatIsNoFolder) {
    makeFile(tree / "file");
    makeLink("nowhere", tree / "dangling");
    makePipe(tree / "pipe");
    std::vector<opc::ustring> files{u"old"};
    const auto expectFailure = [&](const std::string& path, errc::errc_t code, const std::string& what) {
        EXPECT_TRUE(fails([&](auto&... ec) { ops.getFiles(text(path), files, true, ec...); }, code,
                          "getFiles failed: " + what + ": " + path));
    };
    expectFailure(tree / "missing", errc::no_such_file_or_directory, "Path not found");
    expectFailure(tree / "dangling", errc::no_such_file_or_directory, "Path not found");
    expectFailure(tree / "file", errc::not_a_directory, "Not a directory");
    expectFailure(tree / "pipe", errc::not_a_directory, "Not a directory");
    expectFailure(tree / "file/x", errc::not_a_directory, "Not a directory");
    expectFailure(tree / std::string(256, 'x'), errc::filename_too_long, "File name too long");
    EXPECT_THAT(files, ElementsAre(u"old"));
}

TEST_F(LocalListing, OfAPathWithANulFails) {
    std::vector<opc::ustring> files;
    const opc::ustring path = text(tree.path()) + opc::ustring(u"\0x", 2);
    EXPECT_TRUE(reports([&](auto& ec) { ops.getFiles(path, files, false, ec); },
                        make_error_code(errc::invalid_argument)));
    EXPECT_THAT(files, IsEmpty());
}

TEST_F(LocalListing, GoesOnPastAFolderThatCannotBeReadAndReportsIt) {
    runAsOrdinaryUser([] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        for (const char* const folder : {"a", "b", "c", "d"}) {
            makeFolder(own / folder);
            makeFile(own / folder + "/file");
        }
        makeFile(own / "top");
        setMode(own / "b", 0);
        std::vector<opc::ustring> files;
        EXPECT_TRUE(reports([&](auto& ec) { local.getFiles(text(own.path()), files, true, ec); },
                            make_error_code(errc::permission_denied)));
        EXPECT_THAT(files, UnorderedElementsAre(own.text("top"), own.text("a/file"), own.text("c/file"),
                                                own.text("d/file")));
        EXPECT_TRUE(throws([&] { local.getFiles(text(own.path()), files, true); },
                           make_error_code(errc::permission_denied),
                           "getFiles failed: Access denied: " + (own / "b")));
        EXPECT_TRUE(fails([&](auto&... ec) { local.getFiles(own.text("b"), files, false, ec...); },
                          errc::permission_denied, "getFiles failed: Access denied: " + (own / "b")));
    });
}

TEST_F(LocalListing, OfAFolderThatMayBeReadButNotSearchedStillTellsKinds) {
    runAsOrdinaryUser([] {
        const TempTree own;
        opc::LocalFileSystemOps local;
        makeFolder(own / "folder");
        makeFile(own / "folder/file");
        makeLink("x", own / "folder/link");
        setMode(own / "folder", 0400);
        EXPECT_THAT(sortedFiles(local, own.text("folder"), false),
                    ElementsAre(own.text("folder/file"), own.text("folder/link")));
    });
}

TEST_F(LocalListingAtScale, NeedsFewDescriptorsForAnyDepth) {
    makeChain(tree.path(), "ab", 900);
    runInChild([&] {
        limitResource(RLIMIT_NOFILE, 256);
        EXPECT_THAT(list("", true), ElementsAre(tree.text(chainPath("ab", 900) + "/leaf")));
    });
}

TEST_F(LocalListingAtScale, NeedsFewDescriptorsWhereEveryLevelIsLarge) {
    std::string folder = tree.path();
    const std::string longName(200, 'n');
    for (int level = 0; level < 60; ++level) {  // 200 names of 200 bytes do not fit in one read of the host
        for (int number = 0; number < 200; ++number) {
            makeFile(folder + "/" + longName + std::to_string(number));
        }
        folder += "/d";
        makeFolder(folder);
    }
    runInChild([&] {
        limitResource(RLIMIT_NOFILE, 48);
        EXPECT_EQ(60U * 200U, list("", true).size());
    });
}

TEST_F(LocalListingAtScale, GoesBelowTheLimitOfOnePath) {
    makeChain(tree.path(), "ab", 3'000);
    EXPECT_THAT(list("", true), ElementsAre(tree.text(chainPath("ab", 3'000) + "/leaf")));
    EXPECT_THAT(list(chainPath("ab", 3'000)), ElementsAre(tree.text(chainPath("ab", 3'000) + "/leaf")));
}

}  // namespace
/// Runs a body on a stack of this size.
void onSmallStack(std::size_t bytes, std::function<void()> body) {
    pthread_attr_t attributes;
    ASSERT_EQ(0, ::pthread_attr_init(&attributes));
    ASSERT_EQ(0, ::pthread_attr_setstacksize(&attributes, bytes));
    pthread_t thread;
    const auto run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(0, ::pthread_create(&thread, &attributes, run, &body));
    ::pthread_join(thread, nullptr);
    ::pthread_attr_destroy(&attributes);
}

TEST_F(LocalListing, DeepTreeDoesNotUseUpTheStack) {
    constexpr int kLevels = 2'000;
    test::makeChain(tree.path(), "d", kLevels);
    onSmallStack(std::size_t{256} * 1024, [&] {
        std::vector<opc::ustring> found;
        boost::system::error_code ec;
        ops.getFiles(test::text(tree.path()), found, true, ec);
        EXPECT_FALSE(ec.failed());
        EXPECT_EQ(1U, found.size());
    });
}

}  // namespace test
