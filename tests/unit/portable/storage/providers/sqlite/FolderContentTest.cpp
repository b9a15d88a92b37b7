// Folders with what is in them: removed in pieces, copied as a whole, moved in one row.

#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/storage/BeforeChange.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/RawDatabase.hpp"
#include "tests/support/storage/StoreFile.hpp"
#include "tests/unit/portable/storage/providers/sqlite/ContentFixture.hpp"

#include <gtest/gtest.h>
#include <boost/date_time/posix_time/posix_time_types.hpp>

namespace {

using namespace foundation::storage::conformance;
using foundation::storage::provider::Path;
using test::readFile;
using test::readRest;
using test::SqliteContent;
using test::writeFile;

TEST_F(SqliteContent, ATreeIsRemovedInPieces) {
    for (const std::u16string folder : {u"d", u"d/e", u"d/e/f"}) {
        store->createFolder(Path(folder));
        for (int i = 0; i < 600; ++i) {
            const std::string number = std::to_string(i);
            store->createFolder(Path(folder + u"/" + std::u16string(number.begin(), number.end())));
        }
        writeFile(*store, folder + u"/large", large);
        writeFile(*store, folder + u"/some", "some");
    }
    auto reader = other->openReader(Path(u"d/e/large"));
    store->removeTree(Path(u"d"));
    EXPECT_EQ(raw().count("entry"), 3);
    EXPECT_EQ(orphans(), 1);
    EXPECT_EQ(readRest(*reader), large);
    reader.reset();
    EXPECT_EQ(orphans(), 0);
    EXPECT_EQ(raw().count("chunk WHERE id > 0"), 6);
}

TEST_F(SqliteContent, ATreeThatIsCopiedIsSeenWhenItIsWhole) {
    store->createFolder(Path(u"d"));
    store->createFolder(Path(u"d/e"));
    for (char16_t name = u'a'; name < u'z'; ++name) {
        writeFile(*store, std::u16string(u"d/e/") + name,
                  large.substr(static_cast<std::size_t>(name) % 25 * 10'000));
    }
    store->copy(Path(u"d"), Path(u"copy"), kFail);
    for (char16_t name = u'a'; name < u'z'; ++name) {
        EXPECT_EQ(readFile(*other, std::u16string(u"copy/e/") + name),
                  readFile(*other, std::u16string(u"d/e/") + name));
    }
    EXPECT_EQ(orphans(), 0);
}

TEST_F(SqliteContent, AFolderThatIsReplacedWhileItIsCopiedIsCopiedAsItIsThen) {
    for (const char16_t* const folder : {u"d", u"d/e"}) store->createFolder(Path(folder));
    writeFile(*store, u"d/e/old", "old");
    constexpr int kFirstPage = 2;
    const test::BeforeChange hook(kFirstPage, [this] {
        other->removeTree(Path(u"d/e"));
        other->createFolder(Path(u"d/e"));
        writeFile(*other, u"d/e/new", "new");
    });
    file.open()->copy(Path(u"d"), Path(u"copy"), kFail);
    ASSERT_TRUE(hook.wasReached());
    EXPECT_EQ(readFile(*other, u"copy/e/new"), "new");
    EXPECT_FALSE(other->find(Path(u"copy/e/old")));
}

/// A folder of several pages that is changed by somebody else while it is copied.
class SqliteCopy : public SqliteContent {
protected:
    static constexpr int kFiles = 700;  ///< more than are swept at once

    void fill(const std::u16string& folder) {
        store->createFolder(Path(folder));
        for (int i = 0; i < kFiles; ++i) writeFile(*store, folder + u'/' + decimal(i), "text");
    }
    std::size_t count(const std::u16string& folder) {
        const auto lister = other->list(Path(folder));
        std::size_t count = 0;
        for (auto page = lister->next(); !page.empty(); page = lister->next()) count += page.size();
        return count;
    }

private:
    static std::u16string decimal(int number) {
        const std::string digits = std::to_string(number);
        return {digits.begin(), digits.end()};
    }
};

TEST_F(SqliteCopy, OfASourceThatIsRemovedMeanwhileReplacesNothing) {
    store->createFolder(Path(u"copy"));
    writeFile(*store, u"copy/old", "old");
    for (const int change : {2, 3, 6, 12}) {
        SCOPED_TRACE(change);
        fill(u"d");
        const test::BeforeChange hook(change, [this] { other->removeTree(Path(u"d")); });
        PKGCORE_EXPECT_FAILURE(NotFound, file.open()->copy(Path(u"d"), Path(u"copy"), kReplace));
        ASSERT_TRUE(hook.wasReached());
        EXPECT_EQ(readFile(*other, u"copy/old"), "old");
        EXPECT_EQ(count(u"copy"), 1U);
        EXPECT_EQ(orphans(), 0);
    }
}

TEST_F(SqliteCopy, OfASourceInWhosePlaceAnotherIsMeanwhileReplacesNothing) {
    fill(u"d");
    const test::BeforeChange hook(3, [this] {
        other->removeTree(Path(u"d"));
        other->createFolder(Path(u"d"));
    });
    PKGCORE_EXPECT_FAILURE(NotFound, file.open()->copy(Path(u"d"), Path(u"copy"), kFail));
    EXPECT_FALSE(other->find(Path(u"copy")));
}

TEST_F(SqliteCopy, HoldsNothingOfAFolderThatIsRemovedMeanwhile) {
    store->createFolder(Path(u"d"));
    writeFile(*store, u"d/z", "last");
    fill(u"d/e");
    const test::BeforeChange hook(4, [this] { other->removeTree(Path(u"d/e")); });
    file.open()->copy(Path(u"d"), Path(u"copy"), kFail);
    ASSERT_TRUE(hook.wasReached());
    EXPECT_FALSE(other->find(Path(u"copy/e")));
    EXPECT_EQ(readFile(*other, u"copy/z"), "last");
    EXPECT_EQ(orphans(), 0);
}

TEST_F(SqliteCopy, HoldsALargeFileThatIsRemovedMeanwhileAsAWholeOrNotAtAll) {
    store->createFolder(Path(u"d"));
    int missing = 0;
    for (int change = 1; change <= 5; ++change) {
        SCOPED_TRACE(change);
        writeFile(*store, u"d/huge", huge);
        const test::BeforeChange hook(change, [this] { other->remove(Path(u"d/huge")); });
        file.open()->copy(Path(u"d"), Path(u"copy"), kReplace);
        const bool isThere = other->find(Path(u"copy/huge")).has_value();
        EXPECT_TRUE(!isThere || readFile(*other, u"copy/huge") == huge);
        EXPECT_EQ(orphans(), 0);
        missing += isThere ? 0 : 1;
    }
    EXPECT_GT(missing, 0);
}

TEST_F(SqliteCopy, HoldsTheFolderThatReplacesOneMeanwhile) {
    store->createFolder(Path(u"d"));
    fill(u"d/e");
    store->createFolder(Path(u"new"));
    writeFile(*store, u"new/f", "new");
    const test::BeforeChange hook(4, [this] { other->move(Path(u"new"), Path(u"d/e"), kReplace); });
    file.open()->copy(Path(u"d"), Path(u"copy"), kFail);
    ASSERT_TRUE(hook.wasReached());
    EXPECT_EQ(count(u"copy/e"), 1U);
    EXPECT_EQ(readFile(*other, u"copy/e/f"), "new");
    EXPECT_EQ(orphans(), 0);
}

TEST_F(SqliteContent, AFolderIsMovedInOneRow) {
    store->createFolder(Path(u"d"));
    for (int i = 0; i < 100; ++i) {
        writeFile(*store, u"d/" + std::u16string(static_cast<std::size_t>(i + 1), u'x'), "text");
    }
    test::RawDatabase& database = raw();
    const std::string rows = "SELECT group_concat(parent || hex(name) || seal) FROM entry WHERE parent > 1";
    const std::string before = database.run(rows);
    store->move(Path(u"d"), Path(u"moved"), kFail);
    EXPECT_EQ(database.run(rows), before);
    EXPECT_EQ(readFile(*other, u"moved/xxx"), "text");
}

TEST_F(SqliteContent, AFolderThatIsNotWritableKeepsItsEntries) {
    store->createFolder(Path(u"d"));
    store->createFolder(Path(u"d/e"));
    writeFile(*store, u"d/e/f", "text");
    store->setWritable(Path(u"d/e"), false);
    PKGCORE_EXPECT_FAILURE(AccessDenied, store->remove(Path(u"d/e/f")));
    PKGCORE_EXPECT_FAILURE(AccessDenied, store->removeTree(Path(u"d")));
    PKGCORE_EXPECT_FAILURE(AccessDenied, store->createFolder(Path(u"d/e/g")));
    PKGCORE_EXPECT_FAILURE(AccessDenied, store->move(Path(u"d/e/f"), Path(u"f"), kFail));
    EXPECT_NO_THROW(writeFile(*store, u"d/e/f", "new"));
    EXPECT_NO_THROW(store->move(Path(u"d"), Path(u"moved"), kFail));
    store->setWritable(Path(u"moved/e"), true);
    EXPECT_NO_THROW(store->removeTree(Path(u"moved")));
}

TEST_F(SqliteContent, ATimeThatIsNoneIsRefused) {
    const auto before = store->find(Path(u"small"))->lastModified;
    for (const auto time : {boost::posix_time::not_a_date_time, boost::posix_time::pos_infin}) {
        PKGCORE_EXPECT_FAILURE(NotSupported, store->setLastModified(Path(u"small"), time));
    }
    EXPECT_EQ(store->find(Path(u"small"))->lastModified, before);
}

TEST_F(SqliteContent, AnEntryKeepsItsIdentity) {
    const auto identity = [this](const char16_t* path) { return other->find(Path(path))->identity; };
    const auto small = identity(u"small");
    ASSERT_TRUE(small);
    EXPECT_NE(small, identity(u"large"));
    EXPECT_EQ(small, store->find(Path(u"small"))->identity);
    writeFile(*store, u"small", large);
    store->move(Path(u"small"), Path(u"moved"), kFail);
    EXPECT_EQ(identity(u"moved"), small);
    store->copy(Path(u"moved"), Path(u"copy"), kFail);
    EXPECT_NE(identity(u"copy"), small);
}

}  // namespace
