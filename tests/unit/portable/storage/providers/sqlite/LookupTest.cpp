// What a store remembers of a folder holds until anything changes, whoever changes it.

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/unit/portable/storage/providers/sqlite/ContentFixture.hpp"

namespace {

using namespace foundation::storage::conformance;
using foundation::storage::provider::Kind;
using foundation::storage::provider::Path;
using foundation::storage::provider::Provider;
using test::readFile;
using test::writeFile;

enum class Who : unsigned char { Itself, Another };

using test::SqliteContent;

class SqliteLookup : public SqliteContent, public testing::WithParamInterface<Who> {
protected:
    SqliteLookup() {
        store->createFolder(Path(u"a"));
        store->createFolder(Path(u"a/b"));
        writeFile(*store, u"a/b/f", "text");
        look();
        look();
    }

    /// So that the store knows the folder.
    void look() {
        EXPECT_TRUE(store->find(Path(u"a/b/f")));
        EXPECT_EQ(readFile(*store, u"a/b/f"), "text");
    }

    void expectNothing() {
        EXPECT_FALSE(store->find(Path(u"a/b/f")));
        PKGCORE_EXPECT_FAILURE(NotFound, store->openReader(Path(u"a/b/f")));
    }

    Provider& changer() { return GetParam() == Who::Itself ? *store : *other; }
};

INSTANTIATE_TEST_SUITE_P(After, SqliteLookup, testing::Values(Who::Itself, Who::Another),
                         [](const auto& who) { return who.param == Who::Itself ? "Own" : "Others"; });

TEST_P(SqliteLookup, AChangedFileIsTheNewOne) {
    for (const std::size_t size : {std::size_t{5}, std::size_t{0}, test::kChunk, 3 * test::kChunk + 1}) {
        const std::string bytes = test::someBytes(size);
        writeFile(changer(), u"a/b/f", bytes);
        EXPECT_TRUE(readFile(*store, u"a/b/f") == bytes) << size;
    }
}

TEST_P(SqliteLookup, ARemovedFileIsGone) {
    changer().remove(Path(u"a/b/f"));
    expectNothing();
}

TEST_P(SqliteLookup, AFolderInThePlaceOfAFileIsFound) {
    changer().remove(Path(u"a/b/f"));
    changer().createFolder(Path(u"a/b/f"));
    EXPECT_EQ(store->find(Path(u"a/b/f")).value().kind, Kind::Folder);
    PKGCORE_EXPECT_FAILURE(NotFound, store->openReader(Path(u"a/b/f")));
}

TEST_P(SqliteLookup, AMovedFolderIsFoundWhereItIs) {
    changer().move(Path(u"a/b"), Path(u"c"), kFail);
    expectNothing();
    EXPECT_EQ(readFile(*store, u"c/f"), "text");
}

TEST_P(SqliteLookup, AFolderOfWhichTheParentMovesIsFoundWhereItIs) {
    changer().move(Path(u"a"), Path(u"c"), kFail);
    expectNothing();
    EXPECT_EQ(readFile(*store, u"c/b/f"), "text");
}

TEST_P(SqliteLookup, AFolderThatTakesItsPlaceIsTheOneThatIsLookedInto) {
    changer().createFolder(Path(u"c"));
    writeFile(changer(), u"c/f", "new");
    changer().move(Path(u"c"), Path(u"a/b"), kReplace);
    EXPECT_EQ(readFile(*store, u"a/b/f"), "new");
}

TEST_P(SqliteLookup, AFileInThePlaceOfTheFolderHasNothingInIt) {
    changer().removeTree(Path(u"a/b"));
    writeFile(changer(), u"a/b", "file");
    expectNothing();
    EXPECT_EQ(readFile(*store, u"a/b"), "file");
}

// What was not committed was never there.
TEST_F(SqliteContent, ALookDuringAChangeOfAnotherSeesWhatWasBefore) {
    store->createFolder(Path(u"a"));
    const auto writer = test::beginFile(*other, u"a/f", "new");
    EXPECT_FALSE(store->find(Path(u"a/f")));
    writer->commit();
    EXPECT_EQ(readFile(*store, u"a/f"), "new");
    EXPECT_EQ(readFile(*store, u"a/f"), "new");
}

}  // namespace
