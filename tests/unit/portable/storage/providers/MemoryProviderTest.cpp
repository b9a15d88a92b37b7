#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include <pkgcore/portable/storage/providers/memory/MemoryContent.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryTree.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include <gtest/gtest.h>

using namespace foundation::storage;
using namespace foundation::storage::conformance;
using portable::MemoryContentBuilder;
using portable::SharedContent;
using provider::Path;

namespace {

Workplace newStore() { return Workplace(storeFrom("memory", provider::makeMemoryProvider).makeGround()); }

std::string readAll(const portable::MemoryContent& content) {
    std::string bytes(static_cast<std::size_t>(content.size()), '\0');
    bytes.resize(content.read(0, bytes.data(), bytes.size()));
    return bytes;
}

TEST(MemoryContent, SharesItsPiecesWithWhatIsWrittenNext) {
    MemoryContentBuilder builder;
    const std::string bytes = someBytes(3 * portable::MemoryContent::kPieceSize + 10);
    builder.add(bytes.data(), bytes.size());
    const SharedContent first = builder.content();
    builder.add("more", 4);
    const SharedContent second = builder.content();
    ASSERT_EQ(first->pieces().size(), 4u);
    ASSERT_EQ(second->pieces().size(), 4u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(first->pieces()[i], second->pieces()[i]);
    }
    EXPECT_NE(first->pieces()[3], second->pieces()[3]);
    EXPECT_EQ(first->size() + 4, second->size());
    EXPECT_EQ(readAll(*first), bytes);
    EXPECT_EQ(readAll(*second), bytes + "more");
}

TEST(MemoryContent, GoesOnBehindAnOldOneWithoutChangingIt) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{10}, portable::MemoryContent::kPieceSize}) {
        MemoryContentBuilder builder;
        const std::string bytes = someBytes(size);
        builder.add(bytes.data(), bytes.size());
        const SharedContent old = builder.content();
        MemoryContentBuilder next(*old);
        next.add("more", 4);
        next.add("still", 5);
        EXPECT_EQ(readAll(*next.content()), bytes + "morestill");
        EXPECT_EQ(readAll(*old), bytes);
    }
}

TEST(MemoryContent, IsReadFromAnyOffset) {
    MemoryContentBuilder builder;
    const std::string bytes = someBytes(200'000);
    builder.add(bytes.data(), bytes.size());
    const SharedContent content = builder.content();
    std::string read(100'000, '\0');
    for (std::size_t offset = 0; offset <= bytes.size(); offset += 9'999) {
        const std::size_t count = content->read(offset, read.data(), read.size());
        EXPECT_EQ(read.substr(0, count), bytes.substr(offset, read.size()));
    }
    EXPECT_EQ(content->read(200'001, read.data(), 1), 0u);
}

TEST(MemoryProvider, HoldsAHundredThousandEntriesInOneFolder) {
    constexpr std::size_t kCount = 100'000;
    const Workplace place = newStore();
    provider::Provider& store = place.store();
    for (std::size_t i = 0; i < kCount; ++i) {
        const std::string number = std::to_string(1'000'000 + i * 7 % kCount);
        store.createFolder(place.at(std::u16string(number.begin(), number.end())));
    }
    const auto lister = store.list(place.ground().path);
    std::size_t seen = 0;
    std::u16string last;
    for (auto page = lister->next(); !page.empty(); page = lister->next()) {
        EXPECT_LE(page.size(), 1'024u);
        for (const provider::ListItem& item : page) {
            EXPECT_LT(last, item.name);
            last = item.name;
            ++seen;
        }
    }
    EXPECT_EQ(seen, kCount);
}

TEST(MemoryProvider, LetsGoOfATreeThatIsDeeperThanTheStack) {
    auto innermost = std::make_shared<portable::MemoryNode>(provider::Item());
    for (int i = 0; i < 200'000; ++i) {
        auto outer = std::make_shared<portable::MemoryNode>(provider::Item());
        outer->children.put(u"d", std::move(innermost));
        innermost = std::move(outer);
    }
    innermost.reset();
    SUCCEED();
}

TEST(MemoryProvider, FillsPagesThatWereUsedBefore) {
    const Workplace place = newStore();
    for (const char16_t* const path : {u"few/a", u"many/a name that is not short", u"many/b", u"many/c"}) {
        place.folder(path).createFolderRecursive();
    }
    std::vector<provider::ListItem> page;
    EXPECT_EQ(place.store().list(place.at(u"many"))->fill(page), 3u);
    EXPECT_EQ(page.at(0).name, u"a name that is not short");
    EXPECT_EQ(page.at(2).name, u"c");
    page.at(0).isLink = true;
    const auto lister = place.store().list(place.at(u"few"));
    EXPECT_EQ(lister->fill(page), 1u);
    EXPECT_EQ(page.at(0).name, u"a");
    EXPECT_FALSE(page.at(0).isLink);
    EXPECT_EQ(lister->fill(page), 0u);
}

TEST(MemoryProvider, RefusesByItselfWhatWouldTakeAPlaceThatIsTaken) {
    const Workplace place = newStore();
    ASSERT_TRUE(place.write(u"f", "text"));
    ASSERT_TRUE(place.write(u"g", "other"));
    place.folder(u"d").createFolder();
    provider::Provider& store = place.store();
    const Path file = place.at(u"f");
    PKGCORE_EXPECT_FAILURE(AlreadyExists, store.copy(file, place.ground().path, kReplace));
    PKGCORE_EXPECT_FAILURE(AlreadyExists, store.move(file, place.ground().path, kReplace));
    PKGCORE_EXPECT_FAILURE(AlreadyExists, store.copy(file, place.at(u"g"), kFail));
    PKGCORE_EXPECT_FAILURE(AlreadyExists, store.move(file, place.at(u"d"), kReplace));
    PKGCORE_EXPECT_FAILURE(AlreadyExists, store.openWriter(place.at(u"d"), provider::WriteMode::Create));
    EXPECT_EQ(place.everything(), (Contents{{u"d/", "(folder)"}, {u"f", "text"}, {u"g", "other"}}));
}

TEST(MemoryProvider, AListerStaysWithAFolderThatIsRemoved) {
    const Workplace place = newStore();
    place.folder(u"d/e").createFolderRecursive();
    const auto lister = place.store().list(place.at(u"d"));
    place.folder(u"d").removeFolder(FolderRemovalPolicy::WithContents);
    EXPECT_EQ(lister->next().size(), 1u);
    EXPECT_TRUE(lister->next().empty());
}

TEST(MemoryProvider, AFolderThatIsNotWritableKeepsItsEntries) {
    const Workplace place = newStore();
    place.folder(u"d/e").createFolderRecursive();
    ASSERT_TRUE(place.write(u"d/f", "text"));
    ASSERT_TRUE(place.write(u"g", "text"));
    place.folder(u"d").setWritable(false);
    PKGCORE_EXPECT_FAILURE(AccessDenied, place.folder(u"d/new").createFolder());
    PKGCORE_EXPECT_FAILURE(AccessDenied, place.file(u"d/f").removeFile());
    PKGCORE_EXPECT_FAILURE(AccessDenied, place.file(u"d/f").moveFile(place.file(u"h"), kFail));
    PKGCORE_EXPECT_FAILURE(AccessDenied, place.file(u"g").copyFile(place.file(u"d/g"), kFail));
    PKGCORE_EXPECT_FAILURE(AccessDenied, place.folder(u"d").removeFolder(FolderRemovalPolicy::WithContents));
    EXPECT_TRUE(place.write(u"d/f", "new"));
    EXPECT_EQ(place.listTree(u""), (Names{u"d/", u"d/e/", u"d/f", u"g"}));
    place.folder(u"d").setWritable(true);
    place.folder(u"d").removeFolder(FolderRemovalPolicy::WithContents);
}

TEST(MemoryTree, TellsTheTimeOfItsClock) {
    const boost::posix_time::ptime noon(boost::gregorian::date(2001, 2, 3), boost::posix_time::hours(12));
    portable::MemoryTree tree([noon] { return noon; });
    tree.createFolder(Path(u"d"));
    EXPECT_EQ(tree.find(Path(u"d"))->lastModified, noon);
}

TEST(MemoryTree, KeepsTheMarksOfARootToItsAuthority) {
    portable::MemoryTree tree([] { return boost::posix_time::ptime(boost::gregorian::date(2001, 2, 3)); });
    tree.setWritable(Path(u"", u"one"), false);
    EXPECT_FALSE(tree.find(Path(u"", u"one"))->isWritable);
    EXPECT_TRUE(tree.find(Path(u"", u"two"))->isWritable);
}

}  // namespace
