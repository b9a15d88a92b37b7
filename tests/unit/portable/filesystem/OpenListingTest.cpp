// Listings beside and below each other in one thread, and the descriptors that they hold.

#include <pkgcore/platform/filesystem/DirectoryIterator.hpp>

#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include "tests/support/DescriptorCount.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/FailedPath.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace fl::filesystem;
using detail::initialization_mode;
using fl::filesystem::posix::kHostCalls;
using test::TempTree;
using Listing = detail::upath_directory_iterator_impl;

constexpr std::size_t kPlaces = 32;

std::unique_ptr<Listing> listingOf(const std::u16string& folder) {
    return std::make_unique<Listing>(folder, initialization_mode::standard);
}

std::string bytes(const std::u16string& ascii) { return {ascii.begin(), ascii.end()}; }

/// A chain of folders called "n", each with some files beside it.
class ListedChain : public testing::Test {
protected:
    static constexpr int kLevels = 100;

    ListedChain() {
        test::makeChain(tree.path(), "n", kLevels);
        std::string path = tree.path();
        for (int level = 0; level < kLevels; ++level) {
            for (const char* const name : {"/a", "/b", "/z"}) test::makeFile(path + name);
            path += "/n";
        }
    }

    /// Lists a folder and what is below it: the names in all of them, each as often as it was shown.
    void list(const std::u16string& folder, std::multiset<std::u16string>& names) {
        deepest = std::max(deepest, test::openDescriptors().size());
        for (Listing listing(folder, initialization_mode::standard); listing.is_open(); listing.increment()) {
            names.emplace((*listing).filename());
            if (file_status::is_directory((*listing).status())) {
                const std::u16string path = (*listing).full_pathname();
                list(path, names);
                EXPECT_EQ(path, (*listing).full_pathname());
            }
        }
    }

    const test::NoDescriptorLeft noneLeft;
    TempTree tree{test::fastFolder()};
    std::size_t before = test::openDescriptors().size();
    std::size_t deepest = 0;
};

TEST_F(ListedChain, ShowsEachEntryOnceAndHoldsFewDescriptors) {
    std::multiset<std::u16string> names;
    list(test::text(tree.path()), names);
    for (const char16_t* const name : {u"a", u"b", u"z"}) EXPECT_EQ(100U, names.count(name));
    EXPECT_EQ(100U, names.count(u"n"));
    EXPECT_LE(deepest, before + kPlaces + 2);
}

TEST_F(ListedChain, OpensAFolderBelowFromTheOneAroundIt) {
    static std::size_t longest = 0;
    longest = 0;
    test::ScopedSystemCalls calls;
    calls->openat = [](int folder, const char* path, int flags, mode_t mode) {
        if (folder != AT_FDCWD) longest = std::max(longest, std::string(path).size());
        return kHostCalls.openat(folder, path, flags, mode);
    };
    std::multiset<std::u16string> names;
    list(test::text(tree.path()), names);
    EXPECT_EQ(std::string("..").size(), longest);
}

TEST_F(ListedChain, LinkInPlaceOfAListedFolderIsNotFollowed) {
    const auto outer = listingOf(test::text(tree.path()));
    while (!file_status::is_directory((**outer).status())) outer->increment();
    ASSERT_EQ(0, ::rename((tree / "n").c_str(), (tree / "moved").c_str()));
    test::makeLink("moved", tree / "n");
    EXPECT_EQ(tree.text("n"), test::failedPath<NotDirectoryError>([&] { listingOf(tree.text("n")); }));
}

TEST_F(ListedChain, GivesItsDescriptorsUpWhereThereAreNoMore) {
    test::runInChild([&] {
        test::limitResource(RLIMIT_NOFILE, before + 3);
        std::vector<opc::ustring> files;
        opc::LocalFileSystemOps().getFiles(test::text(tree.path()), files, true);
        EXPECT_EQ(301U, files.size());  // and the leaf
    });
}

TEST(OpenListing, LinkIsFollowedFromWithinAListingToo) {
    const TempTree tree;
    test::makeFolder(tree / "elsewhere");
    test::makeFile(tree / "elsewhere/file");
    test::makeFolder(tree / "top");
    test::makeLink("../elsewhere", tree / "top/link");
    const auto outer = listingOf(tree.text("top"));
    const auto inner = listingOf((**outer).full_pathname());
    EXPECT_EQ(u"file", (**inner).filename());
}

class NestedListings : public testing::Test {
protected:
    NestedListings() {
        test::makeChain(tree.path(), "n", kLevels);
        std::u16string path = test::text(tree.path());
        for (int level = 0; level < kLevels; ++level) {
            test::makeFile(bytes(path) + "/file");
            paths.push_back(path);
            path += u"/n";
        }
        for (const std::u16string& folder : paths) {
            listings.push_back(listingOf(folder));
            if (file_status::is_regular((**listings.back()).status())) listings.back()->increment();
        }
    }

    /// Whether a listing, which stands on "n", goes on as it must: with "file", or not at all.
    void goOn(Listing& listing) {
        while (listing.is_open()) {
            listing.increment();
            ++steps;
        }
    }

    static constexpr int kLevels = 80;
    const test::NoDescriptorLeft noneLeft;
    TempTree tree{test::fastFolder()};
    std::vector<std::u16string> paths;
    std::deque<std::unique_ptr<Listing>> listings;
    int steps = 0;
};

TEST_F(NestedListings, MayEndInAnyOrder) {
    while (!listings.empty()) {
        listings.erase(listings.begin() + static_cast<std::ptrdiff_t>(listings.size() / 2));
    }
}

TEST_F(NestedListings, MayGoOnInAnyOrder) {
    for (std::size_t i = 0; i < listings.size(); i += 2) goOn(*listings[i]);
    for (std::size_t i = 1; i < listings.size(); i += 2) goOn(*listings[i]);
    EXPECT_GE(steps, kLevels);
}

TEST_F(NestedListings, OuterOneMayEndFirst) {
    while (!listings.empty()) {
        goOn(*listings.front());
        listings.pop_front();
    }
}

TEST_F(NestedListings, FolderPutInPlaceOfAnotherIsNotTaken) {
    const std::string parked = bytes(paths[50]);
    ASSERT_EQ(0, ::rename(parked.c_str(), (tree / "moved").c_str()));
    test::makeFolder(parked);
    test::makeFolder(parked + "/n");
    while (listings.size() > 61) listings.pop_back();
    listings.erase(listings.begin() + 51, listings.end() - 1);  // the way up from below is cut
    EXPECT_EQ(ESTALE, test::failedNumber([&] { listings[50]->increment(); }));
    EXPECT_FALSE(listings[50]->is_open());
}

TEST_F(NestedListings, ParkedOneTakesTheDescriptorOfAnotherWhereThereAreNoMore) {
    static bool isFull;
    isFull = true;
    test::ScopedSystemCalls calls;
    calls->openat = [](int folder, const char* path, int flags, mode_t mode) {
        if (!std::exchange(isFull, false)) return kHostCalls.openat(folder, path, flags, mode);
        errno = EMFILE;
        return -1;
    };
    const std::size_t held = test::openDescriptors().size();
    listings[50]->increment();
    EXPECT_FALSE(isFull);
    EXPECT_EQ(held, test::openDescriptors().size());
    for (const auto& listing : listings) goOn(*listing);
    EXPECT_GE(steps, kLevels - 1);
}

TEST_F(NestedListings, FolderThatIsGoneIsAnError) {
    const std::string parked = bytes(paths[50]);
    ASSERT_EQ(0, ::rename(parked.c_str(), (tree / "moved").c_str()));
    listings.erase(listings.begin() + 51, listings.end() - 1);
    EXPECT_EQ(paths[50], test::failedPath<PathNotFound>([&] { listings[50]->increment(); }));
}

TEST(OpenListing, PlacesAreSharedByAllThreadsAndGivenBack) {
    const test::NoDescriptorLeft noneLeft;
    const TempTree tree(test::fastFolder());
    test::makeFile(tree / "file");
    const std::size_t before = test::openDescriptors().size();
    const auto holdSome = [&] {
        std::deque<std::unique_ptr<Listing>> listings;
        for (int i = 0; i < 25; ++i) listings.push_back(listingOf(test::text(tree.path())));
        return listings;
    };
    for (int round = 0; round < 3; ++round) {
        auto ours = holdSome();
        std::size_t open = 0;
        std::thread([&] {
            const auto theirs = holdSome();
            open = test::openDescriptors().size();
        }).join();
        EXPECT_LE(open, before + kPlaces + 2);
        EXPECT_GE(open, before + kPlaces);
        while (!ours.empty()) ours.pop_back();
    }
}

}  // namespace
