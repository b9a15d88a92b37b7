// A store whose rows were changed and whose pages are whole: what is read is what was written, or reading
// fails.

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/storage/PageSeals.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gtest/gtest.h>

namespace {

using namespace foundation::storage::conformance;
using foundation::storage::provider::Path;
using foundation::storage::provider::Provider;
using foundation::storage::provider::WriteMode;
using test::writeFile;

const std::string kLarge = test::someBytes(200'000);

/// A change of the rows, and a path that it concerns.
struct Change {
    const char* name;
    const char* sql;
    const char16_t* path;
};

void PrintTo(const Change& change, std::ostream* out) { *out << change.name; }

/// In SQL, the key of an entry and the number of its content.
#define ENTRY(name) " WHERE name = CAST('" name "' AS BLOB)"
#define CONTENT(name) "(SELECT content FROM entry" ENTRY(name) ")"

constexpr Change kChanges[] = {
    {"Byte", "UPDATE chunk SET bytes = CAST('one?' AS BLOB) WHERE id >> 28 = " CONTENT("one"), u"one"},
    {"Shorter", "UPDATE chunk SET bytes = x'00' WHERE id >> 28 = " CONTENT("one"), u"one"},
    {"Missing", "DELETE FROM chunk WHERE id >> 28 = " CONTENT("one"), u"one"},
    {"OtherBytesAndSeal",
     "UPDATE chunk SET (seal, bytes) = (SELECT seal, bytes FROM chunk WHERE id >> 28 = " CONTENT(
         "two") ") WHERE id >> 28 = " CONTENT("one"),
     u"one"},
    {"ChunksExchanged",
     "UPDATE chunk SET id = -1 WHERE id = (" CONTENT(
         "large") " << 28);"
                  "UPDATE chunk SET id = (" CONTENT("large") " << 28) WHERE id = (" CONTENT(
                      "large") " << 28 | 1);"
                               "UPDATE chunk SET id = (" CONTENT("large") " << 28 | 1) WHERE id = -1",
     u"large"},
    {"LastChunkMissing", "DELETE FROM chunk WHERE id = (" CONTENT("large") " << 28 | 3)", u"large"},
    {"MiddleChunk", "UPDATE chunk SET bytes = zeroblob(65536) WHERE id = (" CONTENT("large") " << 28 | 1)",
     u"large"},
    {"Content", "UPDATE entry SET content = " CONTENT("two") ENTRY("one"), u"one"},
    {"NoContent", "UPDATE entry SET content = 0, size = 0" ENTRY("one"), u"one"},
    {"Size", "UPDATE entry SET size = size - 1" ENTRY("one"), u"one"},
    {"LargeSize", "UPDATE entry SET size = size - 65536" ENTRY("large"), u"large"},
    {"HugeSize", "UPDATE entry SET size = 1 << 62" ENTRY("one"), u"one"},
    {"NegativeSize", "UPDATE entry SET size = -1" ENTRY("one"), u"one"},
    {"Name", "UPDATE entry SET name = CAST('six' AS BLOB)" ENTRY("one"), u"six"},
    {"Parent", "UPDATE entry SET parent = (SELECT id FROM entry" ENTRY("folder") ")" ENTRY("one"),
     u"folder/one"},
    {"Kind", "UPDATE entry SET kind = 1" ENTRY("one"), u"one"},
    {"Id", "UPDATE entry SET id = id + 1" ENTRY("one"), u"one"},
    {"TextInsteadOfNumber", "UPDATE entry SET content = 'x'" ENTRY("one"), u"one"},
    {"ReplacedBySiblingRow",
     "REPLACE INTO entry SELECT parent, CAST('one' AS BLOB), id, kind, writable, modified, size, content, "
     "seal "
     "FROM entry" ENTRY("two"),
     u"one"},
    {"StoreKey", "UPDATE store SET key = key + 1", u"one"},
    {"StoreKeyGone", "DELETE FROM store", u"one"},
};

#undef ENTRY
#undef CONTENT

void readInAllWays(Provider& store, const Path& path) {
    const auto reader = store.openReader(path);
    std::string bytes(static_cast<std::size_t>(reader->size().value()), '\0');
    reader->readAt(0, bytes.data(), bytes.size());
}

class SqliteDamage : public testing::TestWithParam<Change> {
protected:
    SqliteDamage() {
        const auto store = file.open();
        store->createFolder(Path(u"folder"));
        writeFile(*store, u"one", "one!");
        writeFile(*store, u"two", "two!");
        writeFile(*store, u"large", kLarge);
    }

    const test::StoreFile file;
};

INSTANTIATE_TEST_SUITE_P(Of, SqliteDamage, testing::ValuesIn(kChanges),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_P(SqliteDamage, IsFoundByReading) {
    test::changeRows(file.native(), GetParam().sql);
    PKGCORE_EXPECT_FAILURE(NotRecoverable, readInAllWays(*file.open(), Path(GetParam().path)));
}

TEST_P(SqliteDamage, IsNotCopied) {
    test::changeRows(file.native(), GetParam().sql);
    PKGCORE_EXPECT_FAILURE(NotRecoverable, file.open()->copy(Path(GetParam().path), Path(u"copy"), kFail));
}

TEST(SqliteDamageElsewhere, AMarkAndATimeAreUnderTheChecksum) {
    for (const char* const change :
         {"writable = 1 - writable", "modified = modified + 1", "seal = seal + 1"}) {
        const test::StoreFile file;
        writeFile(*file.open(), u"f", "text");
        test::changeRows(file.native(), std::string("UPDATE entry SET ") + change + " WHERE parent = 1");
        const auto store = file.open();
        PKGCORE_EXPECT_FAILURE(NotRecoverable, store->find(Path(u"f")));
        PKGCORE_EXPECT_FAILURE(NotRecoverable, store->list(Path())->next());
    }
}

TEST(SqliteDamageElsewhere, WhatIsReadInPiecesIsCheckedToo) {
    const test::StoreFile file;
    writeFile(*file.open(), u"f", kLarge);
    test::changeRows(file.native(), "UPDATE chunk SET seal = seal + 1 WHERE id & 1");
    const auto reader = file.open()->openReader(Path(u"f"));
    char byte = 0;
    EXPECT_EQ(reader->readAt(10, &byte, 1), 1U);
    EXPECT_EQ(byte, kLarge[10]);
    PKGCORE_EXPECT_FAILURE(NotRecoverable, reader->readAt(70'000, &byte, 1));
    PKGCORE_EXPECT_FAILURE(NotRecoverable, reader->readAt(70'000, &byte, 1));
    EXPECT_EQ(reader->readAt(140'000, &byte, 1), 1U);
    EXPECT_EQ(byte, kLarge[140'000]);
    std::string whole(kLarge.size(), '\0');
    PKGCORE_EXPECT_FAILURE(NotRecoverable, reader->readAt(0, whole.data(), whole.size()));
    PKGCORE_EXPECT_FAILURE(NotRecoverable, reader->readAt(65'536, whole.data(), 65'536));
    EXPECT_EQ(reader->readAt(0, whole.data(), 65'536), 65'536U);
    EXPECT_EQ(whole.substr(0, 65'536), kLarge.substr(0, 65'536));
}

/// The file of a store with a content that takes some pages, of which one is damaged.
class SqliteDamagedContent : public testing::Test {
protected:
    SqliteDamagedContent() {
        const auto store = file.open();
        writeFile(*store, u"other", "other");
        writeFile(*store, u"f", test::someBytes(60'000));
    }

    /// At a place in a page with the rest of a content that goes on in the next page.
    void damage(std::size_t place) {
        bytes = test::contentOf(file.native());
        std::size_t at = kPageSize;
        while (bytes[at] != 0 || bytes.compare(at, 4, std::string(4, '\0')) == 0) {
            at += kPageSize;
        }
        bytes[at + place] = static_cast<char>(bytes[at + place] ^ 1);
        test::writeInPlace(file.native(), bytes);
    }

    static constexpr std::size_t kPageSize = test::PageSeals::kPageSize;
    const test::StoreFile file;
    std::string bytes;
};

TEST_F(SqliteDamagedContent, IsNotReadByEitherWay) {
    for (const std::size_t place : {std::size_t{3}, std::size_t{4}, std::size_t{2000}}) {
        damage(place);
        const auto store = file.open();
        for (int time = 0; time < 2; ++time) {
            PKGCORE_EXPECT_FAILURE(NotRecoverable, store->openReader(Path(u"f")));
        }
        damage(place);  // as it was
        EXPECT_TRUE(test::readFile(*store, u"f") == test::someBytes(60'000)) << "what was misread once";
    }
    EXPECT_TRUE(test::readFile(*file.open(), u"f") == test::someBytes(60'000));
}

// The pages that a content gives up are known by the links between them, and some were read by who has just
// tried to read the content.
TEST_F(SqliteDamagedContent, DoesNotLeadARemovalAstray) {
    damage(3);
    {
        const auto store = file.open();
        PKGCORE_EXPECT_FAILURE(NotRecoverable, store->openReader(Path(u"f")));
        PKGCORE_EXPECT_FAILURE(NotRecoverable, store->remove(Path(u"f")));
        EXPECT_EQ(test::readFile(*store, u"other"), "other");
    }
    damage(3);  // as it was
    EXPECT_TRUE(test::readFile(*file.open(), u"f") == test::someBytes(60'000));
}

// Folders that are guarded are looked for in rows that nobody has verified.
TEST(SqliteDamageElsewhere, AFolderThatSeemsToHoldItselfIsRemoved) {
    const test::StoreFile file;
    {
        const auto store = file.open();
        for (const char16_t* const folder : {u"d", u"d/e", u"guarded"}) store->createFolder(Path(folder));
        store->setWritable(Path(u"guarded"), false);
    }
    test::changeRows(file.native(), "UPDATE entry SET id = parent WHERE name = CAST('e' AS BLOB)");
    const auto store = file.open();
    store->removeTree(Path(u"d"));
    EXPECT_FALSE(store->find(Path(u"d")));
    EXPECT_TRUE(store->find(Path(u"guarded")));
}

TEST(SqliteDamageElsewhere, AStoreWithoutItsRootTakesNothing) {
    const test::StoreFile file;
    const auto store = file.open();
    test::changeRows(file.native(), "DELETE FROM entry WHERE parent = 0");
    PKGCORE_EXPECT_FAILURE(NotRecoverable, store->createFolder(Path(u"d/e")));
    PKGCORE_EXPECT_FAILURE(NotRecoverable, store->openWriter(Path(u"d/f"), WriteMode::Create));
}

TEST(SqliteDamageElsewhere, NothingIsErasedThatTheListOfOrphansOnlySeemsToName) {
    const test::StoreFile file;
    writeFile(*file.open(), u"f", kLarge);
    test::changeRows(file.native(), "INSERT INTO orphan SELECT content, 0, 0, 0 FROM entry WHERE size > 0");
    EXPECT_EQ(test::readFile(*file.open(), u"f"), kLarge);
}

}  // namespace
