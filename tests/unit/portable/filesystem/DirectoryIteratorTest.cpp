#include <pkgcore/platform/filesystem/DirectoryIterator.hpp>

#include <pkgcore/platform/filesystem/FileStatus.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"
#include "tests/unit/portable/filesystem/ScriptedFolder.hpp"

#include <algorithm>
#include <cerrno>
#include <deque>
#include <map>
#include <set>

namespace {

using namespace fl::filesystem;
using detail::initialization_mode;
using fl::filesystem::posix::kHostCalls;
using test::Batch;
using test::failedPath;
using test::Records;
using test::ScriptedFolder;
using test::TempTree;
using Listing = detail::upath_directory_iterator_impl;
using Kinds = std::map<std::u16string, unsigned>;

Kinds kindsIn(const std::u16string& folder) {
    Kinds kinds;
    Listing listing(folder, initialization_mode::standard);
    for (; listing.is_open(); listing.increment()) {
        const auto& entry = *listing;
        EXPECT_TRUE(kinds.emplace(entry.filename(), entry.status().kind).second) << "shown twice";
        EXPECT_EQ(folder + u'/' + std::u16string(entry.filename()), entry.full_pathname());
    }
    return kinds;
}

std::size_t countIn(const std::u16string& folder) { return kindsIn(folder).size(); }

TEST(DirectoryIterator, TellsNameAndKindOfEachEntry) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::makeFolder(tree / "folder");
    test::makeFile(tree / "folder/below");
    test::makeLink("folder", tree / "link");
    test::makeLink("nowhere", tree / "dangling");
    test::makePipe(tree / ".pipe");
    const Kinds expected = {{u"file", file_status::regular_file},
                            {u"folder", file_status::directory_file},
                            {u"link", file_status::symlink_file},
                            {u"dangling", file_status::symlink_file},
                            {u".pipe", file_status::fifo_file}};
    EXPECT_EQ(expected, kindsIn(test::text(tree.path())));
}

TEST(DirectoryIterator, EntryHasNoPermissionsAndNoTime) {
    const TempTree tree;
    test::makeFile(tree / "file");
    const Listing listing(test::text(tree.path()), initialization_mode::standard);
    EXPECT_EQ(0U, (*listing).status().permissions);
    EXPECT_TRUE((*listing).status().lastWriteTime.is_not_a_date_time());
}

TEST(DirectoryIterator, ShowsEachOfManyEntriesOnce) {
    for (const std::size_t count : {0U, 1U, 2U, 700U, 100'000U}) {
        const TempTree tree("/dev/shm");
        for (std::size_t i = 0; i < count; ++i) test::makeFile(tree / ("entry-" + std::to_string(i)));
        EXPECT_EQ(count, countIn(test::text(tree.path())));
    }
}

TEST(DirectoryIterator, NamesOfAllLengthsFollowEachOther) {
    const TempTree tree;
    Kinds expected;
    for (std::size_t length = 1; length <= 255; length += 2) {
        test::makeFile(tree / std::string(length, 'n'));
        expected[std::u16string(length, u'n')] = file_status::regular_file;
    }
    EXPECT_EQ(expected, kindsIn(test::text(tree.path())));
}

TEST(DirectoryIterator, NamesThatAreNotUtf8LeadBackToTheirItems) {
    const TempTree tree;
    std::string allBytes;
    for (unsigned byte = 0x80; byte <= 0xFF; ++byte) {
        test::makeFile(tree / ("x" + std::string(1, static_cast<char>(byte))));
        allBytes += static_cast<char>(byte);
    }
    test::makeFile(tree / allBytes);
    test::makeFile(tree / "\xC3\xA4\xF0\x9F\x98\x80");
    Listing listing(test::text(tree.path()), initialization_mode::standard);
    int found = 0;
    for (; listing.is_open(); listing.increment(), ++found) {
        EXPECT_TRUE(file_status::is_regular(symlink_status((*listing).full_pathname())));
        remove((*listing).full_pathname());
    }
    EXPECT_EQ(130, found);
    EXPECT_EQ(0U, countIn(test::text(tree.path())));
}

TEST(DirectoryIterator, RootAndTrailingSeparatorsGiveOneSeparator) {
    const Listing root(u"/", initialization_mode::standard);
    EXPECT_EQ(u"/" + std::u16string((*root).filename()), (*root).full_pathname());
    const TempTree tree;
    test::makeFile(tree / "file");
    EXPECT_EQ(tree.text("file"), (*Listing(tree.text(""), initialization_mode::standard)).full_pathname());
}

TEST(DirectoryIterator, FollowsALinkToAFolder) {
    const TempTree tree;
    test::makeFolder(tree / "folder");
    test::makeFile(tree / "folder/file");
    test::makeLink("folder", tree / "link");
    EXPECT_EQ((Kinds{{u"file", file_status::regular_file}}), kindsIn(tree.text("link")));
}

TEST(DirectoryIterator, OpensFoldersOnly) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::makePipe(tree / "pipe");
    test::makeLink("file", tree / "link");
    test::makeLink("nowhere", tree / "dangling");
    for (const char* const name : {"file", "pipe", "link", "file/below"}) {
        EXPECT_EQ(tree.text(name), failedPath<NotDirectoryError>([&] { countIn(tree.text(name)); }));
    }
    EXPECT_EQ(tree.text("missing"), failedPath<PathNotFound>([&] { countIn(tree.text("missing")); }));
    EXPECT_THROW(countIn(tree.text("dangling")), PathNotFound);
    EXPECT_THROW(countIn(u""), PathNotFound);
    EXPECT_THROW(countIn(std::u16string(u"/tmp\0", 5)), FileNameConversionFailure);
}

TEST(DirectoryIterator, NeedsTheRightToRead) {
    test::runAsOrdinaryUser([] {
        const TempTree tree;
        test::makeFolder(tree / "closed", 0300);
        EXPECT_EQ(tree.text("closed"), failedPath<AccessDenied>([&] { countIn(tree.text("closed")); }));
    });
}

TEST(DirectoryIterator, EndedListingHasNoEntry) {
    const TempTree tree;
    test::makeFile(tree / "file");
    Listing listing(test::text(tree.path()), initialization_mode::standard);
    EXPECT_TRUE(listing.is_open());
    listing.increment();
    EXPECT_FALSE(listing.is_open());
    EXPECT_THROW(*listing, InvalidOperation);
    EXPECT_THROW(listing.increment(), InvalidOperation);
}

TEST(DirectoryIterator, KindThatIsNotListedIsAskedFor) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::makeFolder(tree / "folder");
    test::makeLink("file", tree / "link");
    Records records;
    records.add("file", DT_UNKNOWN).add("folder", DT_UNKNOWN).add("link", DT_UNKNOWN).add("gone", DT_UNKNOWN);
    const ScriptedFolder script({{records.bytes()}});
    const Kinds expected = {{u"file", file_status::regular_file},
                            {u"folder", file_status::directory_file},
                            {u"link", file_status::symlink_file},
                            {u"gone", file_status::file_not_found}};
    EXPECT_EQ(expected, kindsIn(test::text(tree.path())));
}

TEST(DirectoryIterator, KindThatIsListedIsNotAskedFor) {
    const TempTree tree;
    test::makeFile(tree / "file");
    test::makeFolder(tree / "folder");
    test::ScopedSystemCalls calls;
    calls->fstatat = [](int, const char* path, struct stat*, int) {
        ADD_FAILURE() << path;
        return -1;
    };
    EXPECT_EQ(2U, countIn(test::text(tree.path())));
}

TEST(DirectoryIterator, FailureInTheMiddleNamesTheFolderAndEndsTheListing) {
    const test::NoDescriptorLeft noneLeft;
    const TempTree tree;
    Records records;
    records.add("one", DT_REG).add("two", DT_REG);
    const ScriptedFolder script({{records.bytes()}, {"", EIO}});
    const std::u16string folder = test::text(tree.path());
    Listing listing(folder, initialization_mode::standard);
    listing.increment();
    EXPECT_EQ(u"two", (*listing).filename());
    EXPECT_EQ(folder, failedPath<SystemError>([&] { listing.increment(); }));
    EXPECT_FALSE(listing.is_open());
}

TEST(DirectoryIterator, FailureAtOnceLeavesNothingOpen) {
    const test::NoDescriptorLeft noneLeft;
    const ScriptedFolder script({{"", EIO}});
    EXPECT_EQ(EIO, test::failedNumber([] { countIn(u"/tmp"); }));
}

/// Stands on an entry of each folder of a chain, all at the same time, and then does `atTheEnd`.
template <typename Action>
void listNested(const std::u16string& folder, int levels, Action atTheEnd) {
    if (levels == 0) {
        atTheEnd();
        return;
    }
    Listing listing(folder, initialization_mode::standard);
    ASSERT_TRUE(listing.is_open());
    const std::u16string below = (*listing).full_pathname();
    listNested(below, levels - 1, atTheEnd);
    listing.increment();
    EXPECT_FALSE(listing.is_open());
}

TEST(DirectoryIterator, ManyBigFoldersHoldFewDescriptorsAndMissNothing) {
    const test::NoDescriptorLeft noneLeft;
    const TempTree tree("/dev/shm");
    for (int i = 0; i < 1'500; ++i) test::makeFile(tree / ("a-file-with-some-name-" + std::to_string(i)));
    const std::size_t before = test::openDescriptors().size();
    std::deque<Listing> listings;
    for (int i = 0; i < 40; ++i)
        listings.emplace_back(test::text(tree.path()), initialization_mode::standard);
    EXPECT_LE(test::openDescriptors().size(), before + 33);
    for (Listing& listing : listings) {
        std::set<std::u16string> names;
        for (; listing.is_open(); listing.increment()) names.emplace((*listing).filename());
        EXPECT_EQ(1'500U, names.size());
    }
}

TEST(DirectoryIterator, NineHundredLevelsWorkWithFewDescriptors) {
    test::runInChild([] {
        const TempTree tree("/dev/shm");
        test::makeChain(tree.path(), "level", 900);  // more bytes than the system takes in one path
        test::limitResource(RLIMIT_NOFILE, 64);
        bool reached = false;
        listNested(test::text(tree.path()), 900, [&] { reached = true; });
        EXPECT_TRUE(reached);
    });
}

}  // namespace
