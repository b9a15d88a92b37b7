#include <pkgcore/portable/storage/ProviderParts.hpp>

#include <gtest/gtest.h>

#include <stdexcept>

namespace foundation::storage::provider {

namespace {

std::string take(Reader& reader, std::size_t count) {
    std::string bytes(count, '\0');
    bytes.resize(reader.read(bytes.data(), count));
    return bytes;
}

TEST(BytesReader, ReadsInOrderAndAtAnOffset) {
    BytesReader reader("0123456789");
    EXPECT_EQ(reader.size(), 10U);
    EXPECT_EQ(take(reader, 4), "0123");
    char bytes[3];
    EXPECT_EQ(reader.readAt(8, bytes, 3), 2U);
    EXPECT_EQ(std::string(bytes, 2), "89");
    EXPECT_EQ(reader.readAt(10, bytes, 3), 0U);
    EXPECT_EQ(reader.readAt(1'000'000'000'000, bytes, 3), 0U);
    EXPECT_EQ(take(reader, 100), "456789");
    EXPECT_EQ(take(reader, 100), "");
}

TEST(Require, ThrowsTheCodeUnlessTheConditionHolds) {
    EXPECT_NO_THROW(require(true, vfs::ErrorCode::NotFound));
    try {
        require(false, vfs::ErrorCode::NotFound);
        FAIL() << "nothing was thrown";
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), vfs::ErrorCode::NotFound);
        EXPECT_STREQ(failure.what(), "File or folder not found");
        EXPECT_TRUE(failure.getLocation().toString().empty());
    }
}

using Published = std::vector<std::pair<std::string, bool>>;

TEST(BytesWriter, HandsOverTheWholeContentAtEachCommit) {
    Published published;
    BytesWriter writer(WriteMode::CreateNew,
                       [&](const std::string& bytes, bool isNew) { published.emplace_back(bytes, isNew); });
    writer.write("one", 3);
    EXPECT_TRUE(published.empty());
    writer.commit();
    writer.write(" two", 4);
    writer.commit();
    EXPECT_EQ(published, (Published{{"one", true}, {"one two", false}}));
}

TEST(BytesWriter, MustBeNewUntilACommitSucceeds) {
    bool fails = true;
    Published published;
    BytesWriter writer(WriteMode::CreateNew, [&](const std::string& bytes, bool isNew) {
        if (fails) throw std::runtime_error("full");
        published.emplace_back(bytes, isNew);
    });
    EXPECT_THROW(writer.commit(), std::runtime_error);
    fails = false;
    writer.commit();
    EXPECT_EQ(published, (Published{{"", true}}));
}

TEST(BytesWriter, MayReplaceUnlessToldOtherwise) {
    Published published;
    BytesWriter(WriteMode::Create, [&](const std::string& bytes, bool isNew) {
        published.emplace_back(bytes, isNew);
    }).commit();
    EXPECT_EQ(published, (Published{{"", false}}));
}

TEST(BytesWriter, HandsOverNothingWithoutACommit) {
    {
        BytesWriter dropped(WriteMode::Create, [](const std::string&, bool) { FAIL(); });
        dropped.write("text", 4);
    }
    BytesWriter discarded(WriteMode::Create, [](const std::string&, bool) { FAIL(); });
    discarded.write("text", 4);
    discarded.discard();
}

TEST(EntriesLister, FillsAPageWithWhatComesNext) {
    EntriesLister lister({{u"b"}, {u"a"}});
    std::vector<ListItem> page{{u"of before"}, {u"of before"}, {u"of before"}};
    ASSERT_EQ(lister.fill(page), 2u);
    EXPECT_EQ(page.at(0).name, u"a");
    EXPECT_EQ(page.at(1).name, u"b");
    EXPECT_EQ(lister.fill(page), 0u);
}

TEST(EntriesLister, ShowsAllInTheOrderOfTheUnitsAndThenNothing) {
    EntriesLister lister({{u"\uFF41"}, {u"b", Kind::Folder}, {u"\xD83D\xDE00"}, {u"a"}});
    std::u16string names;
    for (const ListItem& item : lister.next()) names += item.name + u' ';
    EXPECT_EQ(names, u"a b \xD83D\xDE00 \uFF41 ");
    EXPECT_TRUE(lister.next().empty());
    EXPECT_TRUE(EntriesLister({}).next().empty());
}

}  // namespace

}  // namespace foundation::storage::provider
