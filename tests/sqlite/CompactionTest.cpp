// Stores that are made as small as what is in them.

#include <pkgcore/platform/storage/Exceptions.hpp>

#include "tests/sqlite/FaultyVfs.hpp"
#include "tests/sqlite/Soundness.hpp"
#include "tests/sqlite/Tree.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/RunInChild.hpp"
#include "tests/support/ScopedEnvironment.hpp"
#include "tests/support/SmallDisk.hpp"
#include "tests/support/storage/PageSeals.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gmock/gmock.h>
#include <unistd.h>

#include <optional>

namespace test {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;
using provider::Path;
using vfs::ErrorCode;
using Kind = VfsCall::Kind;

/// Much is removed again, and what is left lies between what was.
void fill(provider::Provider& store) {
    for (const char16_t* const folder : {u"d", u"gone"}) store.createFolder(Path(folder));
    for (unsigned i = 0; i < 20; ++i) {
        const std::u16string name(1, static_cast<char16_t>(u'a' + i));
        writeFile(store, u"gone/" + name, patternOf(i, 40'000));
        writeFile(store, u"d/" + name, patternOf(100 + i, 300U * i));
    }
    writeFile(store, u"large", patternOf(200, 300'000));
    store.removeTree(Path(u"gone"));
}

std::optional<ErrorCode> codeOfCompacting(const std::u16string& path, int milliseconds = 5000) {
    try {
        provider::compactSqliteStore(path, std::chrono::milliseconds(milliseconds));
        return std::nullopt;
    } catch (const vfs::Exception& failure) {
        return failure.getErrorCode();
    }
}

class SqliteCompaction : public testing::Test {
protected:
    SqliteCompaction() {
        const auto store = file_.open();
        fill(*store);
        truth_ = contentsOf(*store);
    }

    std::string content() const { return contentOf(file_.native()); }

    void expectTruth() {
        EXPECT_EQ(difference(truth_, contentsOf(*file_.open())), "");
        expectSound(file_);
        EXPECT_EQ(PageSeals::firstBroken(content()), 0U);
    }

    StoreFile file_;
    Tree truth_;
};

TEST_F(SqliteCompaction, TakesTheFreePagesAndNothingElse) {
    const std::size_t before = content().size();
    EXPECT_EQ(codeOfCompacting(file_.path()), std::nullopt);
    EXPECT_LT(content().size(), before / 2);
    EXPECT_GT(content().size(), 357'000U) << "what is in it";
    EXPECT_EQ(RawDatabase(file_.native()).run("PRAGMA freelist_count"), "0");
    expectTruth();
    const std::string small = content();
    EXPECT_EQ(codeOfCompacting(file_.path()), std::nullopt);
    EXPECT_EQ(content().size(), small.size());
    expectTruth();
}

TEST_F(SqliteCompaction, WhoHasItOpenGoesOn) {
    auto store = file_.open();
    auto reader = store->openReader(Path(u"large"));
    std::string bytes(100'000, '\0');
    EXPECT_EQ(reader->readAt(0, bytes.data(), bytes.size()), bytes.size());
    auto writer = beginFile(*store, u"new", patternOf(300, 5'000'000));
    EXPECT_EQ(codeOfCompacting(file_.path()), std::nullopt);
    EXPECT_EQ(reader->readAt(100'000, bytes.data(), bytes.size()), bytes.size());
    EXPECT_TRUE(bytes == patternOf(200, 300'000).substr(100'000, 100'000));
    writer->commit();
    EXPECT_TRUE(readFile(*store, u"new") == patternOf(300, 5'000'000));
    store->remove(Path(u"new"));
    writer.reset();
    reader.reset();
    store.reset();
    expectTruth();
}

TEST_F(SqliteCompaction, WaitsForOthersAsLongAsItMay) {
    const std::string before = content();
    {
        RawDatabase other(file_.native());
        other.run("BEGIN IMMEDIATE");
        EXPECT_EQ(codeOfCompacting(file_.path(), 20), ErrorCode::TemporarilyBusy);
        other.run("ROLLBACK");
    }
    EXPECT_EQ(content().size(), before.size());
    expectTruth();
    EXPECT_EQ(codeOfCompacting(file_.path(), 20), std::nullopt);
    EXPECT_LT(content().size(), before.size());
}

TEST_F(SqliteCompaction, DamageIsLeftAsItIs) {
    std::string bytes = content();
    const std::size_t at = bytes.find(patternOf(200, 300'000).substr(0, 100));
    ASSERT_NE(at, std::string::npos);
    bytes[at] = static_cast<char>(bytes[at] ^ 1);
    writeInPlace(file_.native(), bytes);
    EXPECT_EQ(codeOfCompacting(file_.path()), ErrorCode::NotRecoverable);
    EXPECT_EQ(content().size(), bytes.size());
    EXPECT_TRUE(content().substr(4096) == bytes.substr(4096));
    EXPECT_EQ(readFile(*file_.open(), u"d/b"), patternOf(101, 300));
}

std::uint32_t numberAt(const std::string& bytes, std::size_t at) {
    std::uint32_t number = 0;
    for (std::size_t i = at; i < at + 4; ++i) number = number << 8U | static_cast<unsigned char>(bytes[i]);
    return number;
}

/// What a loss of power leaves of free pages, which SQLite does not bring back: all of them but those that
/// list the others.
std::string withHalfFreePages(std::string bytes) {
    constexpr std::size_t kPage = PageSeals::kPageSize;
    for (std::size_t list = numberAt(bytes, 32); list != 0; list = numberAt(bytes, (list - 1) * kPage)) {
        const std::size_t names = (list - 1) * kPage + 4;
        for (std::size_t i = 1; i <= numberAt(bytes, names); ++i) {
            const std::size_t page = (numberAt(bytes, names + 4 * i) - 1) * kPage;
            bytes.replace(page + 1024, 1024, someBytes(1024));
        }
    }
    return bytes;
}

TEST_F(SqliteCompaction, HalfAPageWithoutUseIsNoDamage) {
    const std::string bytes = withHalfFreePages(content());
    ASSERT_NE(PageSeals::firstBroken(bytes), 0U);
    writeInPlace(file_.native(), bytes);
    ASSERT_EQ(difference(truth_, contentsOf(*file_.open())), "");
    EXPECT_EQ(codeOfCompacting(file_.path()), std::nullopt);
    EXPECT_LT(content().size(), bytes.size());
    expectTruth();
}

TEST_F(SqliteCompaction, DamageInTheListOfFreePagesIsLeftAsItIs) {
    std::string bytes = content();
    const std::size_t list = (numberAt(bytes, 32) - 1) * PageSeals::kPageSize;
    bytes[list + 9] = static_cast<char>(bytes[list + 9] ^ 1);
    writeInPlace(file_.native(), bytes);
    EXPECT_EQ(codeOfCompacting(file_.path()), ErrorCode::NotRecoverable);
    EXPECT_TRUE(content().substr(4096) == bytes.substr(4096));
}

/// Puts a number in a page, which keeps its seal.
std::string withNumber(std::string bytes, std::size_t at, const std::string& number) {
    const std::size_t page = at / PageSeals::kPageSize;
    bytes.replace(at, number.size(), number);
    PageSeals::seal(bytes.data() + page * PageSeals::kPageSize, page + 1);
    return bytes;
}

TEST_F(SqliteCompaction, AListOfFreePagesThatCannotBeRightIsDamage) {
    const std::string whole = content();
    const std::size_t list = (numberAt(whole, 32) - 1) * PageSeals::kPageSize;
    const std::string noPages(4, '\0');
    const std::string manyPages("\0\1\0\0", 4);
    for (const std::string& bytes :
         {withNumber(whole, 36, noPages), withNumber(whole, list + 4, manyPages),
          withNumber(whole, list + 8, noPages), withNumber(whole, list + 8, manyPages),
          withNumber(whole, list, manyPages)}) {
        ASSERT_EQ(PageSeals::firstBroken(bytes), 0U);
        writeInPlace(file_.native(), bytes);
        EXPECT_EQ(codeOfCompacting(file_.path()), ErrorCode::NotRecoverable);
        EXPECT_TRUE(content().substr(4096) == bytes.substr(4096));
    }
}

TEST(SqliteCompactionOfNothing, MakesNoStoreAndAdoptsNone) {
    const StoreFile file;
    EXPECT_EQ(codeOfCompacting(file.path()), ErrorCode::NotFound);
    EXPECT_TRUE(filesBeside(file).empty());
    makeFile(file.native(), "text");
    EXPECT_EQ(codeOfCompacting(file.path()), ErrorCode::NotSupported);
    EXPECT_EQ(contentOf(file.native()), "text");
}

TEST_F(SqliteCompaction, WithoutRoomForTheJournalTheStoreIsAsItWas) {
    if (!canMountSmallDisk()) GTEST_SKIP() << "this machine mounts no file systems for tests";
    runInChild([this] {
        const TempTree place;
        const std::string bytes = content();
        ASSERT_TRUE(mountSmallDisk(place.path(), std::to_string(bytes.size() + 100'000)));
        const StoreFile small(place.path());
        makeFile(small.native(), bytes);
        EXPECT_EQ(codeOfCompacting(small.path()), ErrorCode::NoSpace);
        EXPECT_EQ(difference(truth_, contentsOf(*small.open())), "");
        EXPECT_EQ(contentOf(small.native()).size(), bytes.size());
        expectSound(small);
    });
}

TEST_F(SqliteCompaction, WithoutRoomForTheCopyTheStoreIsAsItWas) {
    if (!canMountSmallDisk()) GTEST_SKIP() << "this machine mounts no file systems for tests";
    {
        // More of it than is kept in memory.
        const auto store = file_.open();
        writeFile(*store, u"huge", patternOf(400, 12'000'000));
        truth_ = contentsOf(*store);
    }
    runInChild([this] {
        const TempTree place;
        ASSERT_TRUE(mountSmallDisk(place.path(), "64k"));
        const std::string before = content();
        {
            const ScopedEnvironment temporary("SQLITE_TMPDIR", place.path().c_str());
            sqlite3_shutdown();  // it looks once
            EXPECT_EQ(codeOfCompacting(file_.path()), ErrorCode::NoSpace);
        }
        EXPECT_EQ(content().size(), before.size());
        expectTruth();
    });
}

/// Each kind of call fails, one after the other, once or from then on.
class SqliteCompactionFault : public SqliteCompaction,
                              public testing::WithParamInterface<std::tuple<Kind, bool>> {
protected:
    /// False if the call was never reached.
    bool run(const std::string& whole, unsigned number) {
        SCOPED_TRACE(number);
        ::unlink((file_.native() + "-journal").c_str());
        ::unlink((file_.native() + "-wal").c_str());
        makeFile(file_.native(), whole);
        unsigned calls = 0;
        {
            FaultyVfs faulty;
            faulty.onCall([&](const VfsCall& call) {
                if (call.kind != std::get<Kind>(GetParam())) return SQLITE_OK;
                ++calls;
                const bool strikes = std::get<bool>(GetParam()) ? calls >= number : calls == number;
                return strikes ? SQLITE_IOERR : SQLITE_OK;
            });
            codeOfCompacting(file_.path(), 1);
        }
        expectTruth();
        return calls >= number;
    }
};

TEST_P(SqliteCompactionFault, TakesNothing) {
    const std::string whole = content();
    const unsigned step = kIsSanitized ? 7 : 3;
    unsigned number = 1;
    while (run(whole, number) && !HasFailure()) number += step;
    EXPECT_GT(number, 1U);
}

INSTANTIATE_TEST_SUITE_P(Of, SqliteCompactionFault,
                         testing::Combine(testing::Values(Kind::Open, Kind::Read, Kind::Write, Kind::Sync,
                                                          Kind::Truncate, Kind::FileSize, Kind::Lock),
                                          testing::Bool()));

}  // namespace

}  // namespace test
