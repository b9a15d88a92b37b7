#include <pkgcore/portable/storage/providers/native/NativeLister.hpp>

#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/ScopedSystemCalls.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/unit/portable/filesystem/ReplacedCalls.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

using foundation::storage::portable::NativeLister;
using foundation::storage::provider::Kind;
using foundation::storage::provider::ListItem;

namespace {

class NativeListing : public testing::TestWithParam<std::size_t> {
protected:
    NativeLister newLister() {
        return NativeLister(
            [this] {
                return fl::filesystem::posix::openAt(AT_FDCWD, tree_.path().c_str(), O_RDONLY | O_DIRECTORY);
            },
            [](const std::u16string& /*name*/) { return false; }, GetParam());
    }

    static std::vector<std::u16string> namesOf(NativeLister lister) {
        std::vector<std::u16string> names;
        for (auto page = lister.next(); !page.empty(); page = lister.next()) {
            EXPECT_LE(page.size(), GetParam());
            for (const ListItem& item : page) names.push_back(item.name);
        }
        return names;
    }

    test::TempTree tree_{test::fastFolder()};
};

TEST_P(NativeListing, ShowsEachEntryOnceAndInOrderWhateverThePage) {
    std::vector<std::u16string> expected;
    for (int i = 0; i < 60; ++i) {
        const std::string name = std::to_string(i * 37 % 60);
        test::makeFile(tree_ / name);
        expected.push_back(test::text(name));
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(namesOf(newLister()), expected);
}

TEST_P(NativeListing, OfAnEmptyFolderIsEmpty) { EXPECT_EQ(namesOf(newLister()).size(), 0u); }

TEST_P(NativeListing, LooksAtEachEntryWhereTheFileSystemTellsNoKinds) {
    test::makeFile(tree_ / "file");
    test::makeFolder(tree_ / "folder");
    test::makePipe(tree_ / "pipe");
    test::ScopedSystemCalls calls;
    test::hideKinds(calls);
    std::vector<std::pair<Kind, bool>> found;
    NativeLister lister = newLister();
    for (auto page = lister.next(); !page.empty(); page = lister.next()) {
        for (const ListItem& item : page) found.emplace_back(item.kind, item.isDevice);
    }
    EXPECT_EQ(found, (std::vector<std::pair<Kind, bool>>{
                         {Kind::File, false}, {Kind::Folder, false}, {Kind::File, true}}));
}

TEST_P(NativeListing, GoesOnBehindWhatWasRemoved) {
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        test::makeFile(tree_ / name);
    }
    NativeLister lister = newLister();
    std::size_t seen = 0;
    for (auto page = lister.next(); !page.empty(); page = lister.next()) {
        for (const ListItem& item : page) {
            ++seen;
            ASSERT_EQ(::unlink((tree_ / std::string(item.name.begin(), item.name.end())).c_str()), 0);
        }
    }
    EXPECT_EQ(seen, 5u);
}

INSTANTIATE_TEST_SUITE_P(Pages, NativeListing, testing::Values(1, 2, 3, 7, 59, 60, 61, 1000));

}  // namespace
