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
#include "tests/unit/portable/storage/providers/sqlite/ContentFixture.hpp"

#include <gmock/gmock.h>
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
using test::beginFile;
using test::kChunk;
using test::kHuge;
using test::readFile;
using test::readRest;
using test::SqliteContent;
using test::writeFile;

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

TEST_F(SqliteContent, OpeningWhatIsRemovedMeanwhileLeavesNothingBehind) {
    for (int look = 1; orphans() == 0; ++look) {
        writeFile(*store, u"large", large);
        const test::BeforeLook hook(look, [this] { other->remove(Path(u"large")); });
        try {
            file.open()->openReader(Path(u"large"));
        } catch (const vfs::Exception& failure) {
            EXPECT_EQ(failure.getErrorCode(), ErrorCode::NotFound) << failure.what();
        }
        EXPECT_EQ(orphans(), 0) << look;
        if (!hook.wasReached()) return;
    }
}

TEST_F(SqliteContent, OpeningWhatIsReplacedMeanwhileLeavesNothingBehind) {
    for (int look = 1; orphans() == 0; ++look) {
        writeFile(*store, u"large", large);
        const test::BeforeLook hook(look, [this] { writeFile(*other, u"large", huge); });
        file.open()->openReader(Path(u"large"));
        EXPECT_EQ(orphans(), 0) << look;
        if (!hook.wasReached()) return;
    }
}

TEST_F(SqliteContent, AppendingBeginsAnewWhereTheFileGoesMeanwhile) {
    for (int look = 1;; ++look) {
        writeFile(*store, u"large", large);
        const test::BeforeLook hook(look, [this] { other->remove(Path(u"large")); });
        const auto watched = file.open();
        const auto writer = beginFile(*watched, u"large", "new", WriteMode::Append);
        if (!hook.wasReached()) break;
        writer->commit();
        EXPECT_THAT(readFile(*other, u"large"), testing::AnyOf("new", large + "new")) << look;
    }
    EXPECT_EQ(orphans(), 0);
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

}  // namespace
