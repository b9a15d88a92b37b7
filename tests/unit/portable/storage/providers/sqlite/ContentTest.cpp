// Contents that are larger than a row: written apart, published at once, kept for who reads them, erased when
// nobody does.

#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/RawFiles.hpp"
#include "tests/support/storage/BeforeChange.hpp"
#include "tests/support/storage/PageSeals.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/RawDatabase.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>

namespace {

namespace vfs = foundation::storage::vfs;
using namespace foundation::storage::conformance;
using foundation::storage::provider::Path;
using foundation::storage::provider::Provider;
using foundation::storage::provider::Reader;
using foundation::storage::provider::WriteMode;
using foundation::storage::provider::Writer;
using test::beginFile;
using test::readFile;
using test::readRest;
using test::writeFile;

constexpr std::size_t kChunk = 65'536;
/// More than a writer keeps in memory.
constexpr std::size_t kHuge = 5'000'000;

/// A store by two providers, which know as little of each other as two processes do.
class SqliteContent : public testing::Test {
protected:
    SqliteContent() {
        writeFile(*store, u"small", "old");
        writeFile(*store, u"large", large);
    }
    ~SqliteContent() override {
        store.reset();
        other.reset();
        EXPECT_EQ(raw().run("PRAGMA integrity_check"), "ok");
    }

    test::RawDatabase& raw() {
        if (!raw_) raw_ = std::make_unique<test::RawDatabase>(file.native());
        return *raw_;
    }
    int orphans() { return raw().count("orphan"); }
    int chunks() { return raw().count("chunk"); }
    int chunksOfHuge() const { return static_cast<int>(kHuge / kChunk) + 1; }

    const test::StoreFile file;
    std::shared_ptr<Provider> store = file.open();
    std::shared_ptr<Provider> other = file.open();
    const std::string large = test::someBytes(300'000);
    const std::string huge = test::someBytes(kHuge);

private:
    std::unique_ptr<test::RawDatabase> raw_;
};

TEST(SqliteChunks, AreFullBeforeTheLastOneHoweverManyThereAre) {
    using foundation::storage::sqlite::sizeOfChunk;
    for (const std::int64_t last : {0, 1, 0x7FFF, 0x8000, 0xFFFF, 0x10000, 0x0FFF'FFFF}) {
        const std::int64_t size = last * std::int64_t{kChunk} + 5;
        EXPECT_EQ(sizeOfChunk(size, last), 5U) << last;
        EXPECT_EQ(sizeOfChunk(size, 0), last == 0 ? 5U : kChunk) << last;
        EXPECT_EQ(sizeOfChunk(size - 5 + std::int64_t{kChunk}, last), kChunk) << last;
    }
}

TEST_F(SqliteContent, WhatIsNotPublishedIsAnOrphan) {
    const int before = chunks();
    auto writer = beginFile(*store, u"huge", huge);
    EXPECT_EQ(orphans(), 1);
    EXPECT_GT(chunks(), before);
    EXPECT_FALSE(other->find(Path(u"huge")));
    writer->commit();
    EXPECT_EQ(orphans(), 0);
    EXPECT_EQ(chunks(), before + chunksOfHuge());
    EXPECT_EQ(readFile(*other, u"huge"), huge);
}

TEST_F(SqliteContent, WhatIsDiscardedIsGone) {
    const int before = chunks();
    beginFile(*store, u"huge", huge)->discard();
    beginFile(*store, u"large", huge);
    beginFile(*store, u"large", huge, WriteMode::Append);
    EXPECT_EQ(orphans(), 0);
    EXPECT_EQ(chunks(), before);
    EXPECT_EQ(readFile(*other, u"large"), large);
}

TEST_F(SqliteContent, AWriterAtWorkIsNotSweptAway) {
    auto writer = beginFile(*store, u"huge", huge);
    const auto third = file.open();
    third->remove(Path(u"large"));
    writer->commit();
    EXPECT_EQ(readFile(*third, u"huge"), huge);
}

/// A store whose pins nobody sees who opens it from now on.
class SqliteContentWithoutPins : public SqliteContent {
protected:
    /// Opens it once more, which erases what seems to be left behind.
    std::shared_ptr<Provider> openUnaware() {
        EXPECT_EQ(::unlink((file.native() + "-pins").c_str()), 0);
        return file.open();
    }
};

TEST_F(SqliteContentWithoutPins, WhatIsSweptAwayIsNotPublished) {
    auto writer = beginFile(*store, u"huge", huge);
    const auto third = openUnaware();
    ASSERT_EQ(orphans(), 0);
    PKGCORE_EXPECT_FAILURE(IOError, writer->commit());
    PKGCORE_EXPECT_FAILURE(IOError, writer->write(huge.data(), huge.size()));
    EXPECT_FALSE(third->find(Path(u"huge")));
    writer.reset();
    writeFile(*store, u"huge", huge);
    EXPECT_EQ(readFile(*third, u"huge"), huge);
}

TEST_F(SqliteContentWithoutPins, NoOrphanIsContinuedOfWhichAPartIsGone) {
    auto writer = beginFile(*store, u"huge", huge);
    test::changeRows(raw(), "DELETE FROM chunk WHERE id = (SELECT max(id) FROM chunk)");
    PKGCORE_EXPECT_FAILURE(IOError, writer->write(huge.data(), huge.size()));
    PKGCORE_EXPECT_FAILURE(IOError, writer->commit());
    writer.reset();
    EXPECT_EQ(orphans(), 0);
}

TEST_F(SqliteContentWithoutPins, TheBytesOfAnotherAppenderAreNotTakenForTheOwn) {
    const std::string mine(kHuge, 'm');
    const std::string yours(kHuge, 'y');
    auto writer = beginFile(*store, u"large", mine, WriteMode::Append);
    const auto third = openUnaware();
    auto unaware = beginFile(*third, u"large", yours, WriteMode::Append);
    PKGCORE_EXPECT_FAILURE(IOError, writer->commit());
    unaware->commit();
    EXPECT_TRUE(readFile(*store, u"large") == large + yours);
}

TEST_F(SqliteContentWithoutPins, ACopyOfAFolderThatIsSweptAwayIsNotPublished) {
    store->createFolder(Path(u"d"));
    for (char16_t name = u'a'; name <= u'c'; ++name) {
        store->createFolder(Path(std::u16string(u"d/") + name));
        writeFile(*store, std::u16string(u"d/") + name + u"/f", "text");
        writeFile(*store, std::u16string(u"d/") + name + u"/large", large);
    }
    bool isPublished = false;
    for (int change = 2; !isPublished; ++change) {
        SCOPED_TRACE(change);
        const test::BeforeChange hook(change, [this] { openUnaware(); });
        const auto copier = file.open();
        try {
            copier->copy(Path(u"d"), Path(u"copy"), kFail);
            isPublished = true;
        } catch (const vfs::Exception& failure) {
            EXPECT_EQ(failure.getErrorCode(), ErrorCode::IOError) << failure.what();
        }
        EXPECT_EQ(hook.wasReached(), !isPublished);
        EXPECT_EQ(store->find(Path(u"copy")).has_value(), isPublished);
        EXPECT_EQ(orphans(), 0);
        EXPECT_EQ(raw().count("entry WHERE parent <> 0 AND parent NOT IN (SELECT id FROM entry)"), 0);
    }
    EXPECT_EQ(readFile(*store, u"copy/c/large"), large);
}

TEST_F(SqliteContent, AReaderKeepsWhatIsRemovedAndThenItGoes) {
    const int before = chunks();
    auto reader = store->openReader(Path(u"large"));
    other->remove(Path(u"large"));
    EXPECT_EQ(orphans(), 1);
    EXPECT_EQ(chunks(), before);
    EXPECT_EQ(readRest(*reader), large);
    reader.reset();
    EXPECT_EQ(orphans(), 0);
    EXPECT_EQ(chunks(), 1);
}

TEST_F(SqliteContent, TheLastReaderTakesTheContentWithIt) {
    auto one = store->openReader(Path(u"large"));
    auto two = store->openReader(Path(u"large"));
    auto three = other->openReader(Path(u"large"));
    store->remove(Path(u"large"));
    for (std::unique_ptr<Reader>* const reader : {&one, &three}) {
        reader->reset();
        EXPECT_EQ(orphans(), 1);
    }
    EXPECT_EQ(readRest(*two), large);
    two.reset();
    EXPECT_EQ(orphans(), 0);
}

TEST_F(SqliteContent, AReaderKeepsWhatIsReplacedFromElsewhere) {
    auto reader = other->openReader(Path(u"large"));
    char byte = 0;
    ASSERT_EQ(reader->read(&byte, 1), 1U);
    writeFile(*store, u"large", "new");
    writeFile(*store, u"large", huge);
    store->remove(Path(u"large"));
    EXPECT_EQ(byte + readRest(*reader), large);
}

TEST_F(SqliteContent, AppendingGoesOnInPlace) {
    const int before = chunks();
    const auto reader = other->openReader(Path(u"large"));
    writeFile(*store, u"large", "more", WriteMode::Append);
    EXPECT_EQ(chunks(), before);
    EXPECT_EQ(orphans(), 0);
    writeFile(*store, u"large", huge, WriteMode::Append);
    EXPECT_EQ(orphans(), 0);
    EXPECT_EQ(readFile(*other, u"large"), large + "more" + huge);
    EXPECT_EQ(readRest(*reader), large);
}

// Full rows go to where they are wanted, parts of rows through memory of the reader.
TEST_F(SqliteContent, APieceOfAnySizeIsReadFromAnyPlace) {
    writeFile(*store, u"even", huge.substr(0, 20 * kChunk));
    const std::size_t places[] = {0, 1, kChunk - 1, kChunk, kChunk + 1, 18 * kChunk, 20 * kChunk - 1};
    const std::size_t sizes[] = {1, kChunk - 1, kChunk, kChunk + 1, 2 * kChunk, 17 * kChunk + 5, 30 * kChunk};
    for (const auto& [path, content] :
         {std::pair(u"even", huge.substr(0, 20 * kChunk)), std::pair(u"large", large)}) {
        const std::unique_ptr<Reader> reader = store->openReader(Path(path));
        for (const std::size_t place : places) {
            for (const std::size_t size : sizes) {
                std::string bytes(size, '\0');
                bytes.resize(reader->readAt(place, bytes.data(), size));
                EXPECT_TRUE(bytes == (place < content.size() ? content.substr(place, size) : std::string()))
                    << size << " bytes at " << place << " of " << content.size();
            }
        }
    }
}

TEST_F(SqliteContent, EachCommitAddsToTheOneBefore) {
    for (const std::size_t start : {std::size_t{0}, kChunk - 1, kChunk, kChunk + 1, kHuge}) {
        const std::string first = huge.substr(0, start);
        std::string expected = first;
        auto writer = beginFile(*store, u"f", first);
        for (const std::size_t size :
             {std::size_t{1}, kChunk, std::size_t{0}, kHuge, kChunk - 2, kChunk * 64}) {
            writer->commit();
            ASSERT_TRUE(readFile(*other, u"f") == expected) << start << ", " << size;
            const std::string piece = huge.substr(0, size);
            writer->write(piece.data(), piece.size());
            expected += piece;
        }
        writer->commit();
        ASSERT_TRUE(readFile(*other, u"f") == expected);
        EXPECT_EQ(orphans(), 0);
    }
}

/// What somebody else does to a file while it is being appended to.
struct Disturbance {
    const char* name;
    void (*act)(Provider& store, const Path& file);
};

void PrintTo(const Disturbance& one, std::ostream* out) { *out << one.name; }

constexpr Disturbance kDisturbances[] = {
    {"nothing", [](Provider& /*store*/, const Path& /*file*/) {}},
    {"removed", [](Provider& store, const Path& file) { store.remove(file); }},
    {"replaced", [](Provider& store, const Path& file) { writeFile(store, file.text(), "other"); }},
    {"moved", [](Provider& store, const Path& file) { store.move(file, Path(u"moved"), kReplace); }},
    {"movedOver", [](Provider& store, const Path& file) { store.move(Path(u"small"), file, kReplace); }},
    {"copied", [](Provider& store, const Path& file) { store.copy(file, Path(u"moved"), kReplace); }},
    {"appendedSome",
     [](Provider& store, const Path& file) { writeFile(store, file.text(), "other", WriteMode::Append); }},
    {"appendedMuch",
     [](Provider& store, const Path& file) {
         writeFile(store, file.text(), std::string(kHuge, 'o'), WriteMode::Append);
     }},
    {"marked", [](Provider& store, const Path& file) { store.setWritable(file, false); }},
};

class SqliteAppending : public SqliteContent, public testing::WithParamInterface<Disturbance> {};

INSTANTIATE_TEST_SUITE_P(While, SqliteAppending, testing::ValuesIn(kDisturbances),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_P(SqliteAppending, TheResultIsWhatWasOpenedAndWhatWasAdded) {
    for (const std::size_t old : {std::size_t{10}, kChunk, std::size_t{100'000}}) {
        for (const std::size_t before : {std::size_t{20}, std::size_t{200'000}, kHuge}) {
            for (const std::size_t after : {std::size_t{0}, std::size_t{30}, kHuge}) {
                SCOPED_TRACE(testing::Message() << old << ", " << before << ", " << after);
                writeFile(*store, u"small", "old");
                writeFile(*store, u"f", huge.substr(0, old));
                auto writer = beginFile(*store, u"f", huge.substr(0, before), WriteMode::Append);
                GetParam().act(*other, Path(u"f"));
                const bool isMoved = other->find(Path(u"moved")).has_value();
                const std::string moved = isMoved ? readFile(*other, u"moved") : "";
                writer->write(huge.data(), after);
                writer->commit();
                const std::string expected =
                    huge.substr(0, old) + huge.substr(0, before) + huge.substr(0, after);
                ASSERT_TRUE(readFile(*other, u"f") == expected);
                ASSERT_TRUE(!isMoved || readFile(*other, u"moved") == moved);
                writer.reset();
                ASSERT_EQ(orphans(), 0);
            }
        }
    }
}

TEST_P(SqliteAppending, WhatIsGivenUpHarmsNobody) {
    writeFile(*store, u"f", huge.substr(0, 100'000));
    auto writer = beginFile(*store, u"f", huge, WriteMode::Append);
    GetParam().act(*other, Path(u"f"));
    const bool isThere = other->find(Path(u"f")).has_value();
    const std::string before = isThere ? readFile(*other, u"f") : "";
    writer.reset();
    EXPECT_EQ(orphans(), 0);
    EXPECT_TRUE(!isThere || readFile(*other, u"f") == before);
}

TEST_F(SqliteContent, TwoWhoAppendAtOnceDoNotMixTheirBytes) {
    const std::string mine(kHuge, 'm');
    const std::string yours(kHuge, 'y');
    auto one = beginFile(*store, u"large", mine, WriteMode::Append);
    auto two = beginFile(*other, u"large", yours, WriteMode::Append);
    two->write("!", 1);
    two->commit();
    EXPECT_TRUE(readFile(*store, u"large") == large + yours + "!");
    one->commit();
    EXPECT_TRUE(readFile(*store, u"large") == large + mine);
    one.reset();
    two.reset();
    EXPECT_EQ(orphans(), 0);
}

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
