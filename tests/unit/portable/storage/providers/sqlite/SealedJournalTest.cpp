// The rollback journal of a database of which each page has a seal, by SQL.

#include <pkgcore/portable/storage/providers/sqlite/Connection.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>

#include "tests/sqlite/FaultyVfs.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/storage/PageSeals.hpp"

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <xxhash.h>

#include <memory>
#include <optional>

namespace {

namespace vfs = foundation::storage::vfs;
using namespace foundation::storage::sqlite;
using test::PageSeals;
using vfs::ErrorCode;
using Kind = test::VfsCall::Kind;

constexpr std::size_t kRecord = 4 + PageSeals::kPageSize + 4;

/// SQLite's header, and the seal behind it.
constexpr std::size_t kPlainHeader = 28;

std::uint64_t numberAt(const std::string& bytes, std::size_t at, std::size_t size = 4) {
    std::uint64_t number = 0;
    for (std::size_t i = at; i < at + size; ++i) number = number << 8U | static_cast<unsigned char>(bytes[i]);
    return number;
}

/// By what SQLite takes the disk for: a header has a sector of its own.
class SealedJournal : public testing::TestWithParam<unsigned> {
protected:
    SealedJournal() {
        setUris(1);
        Connection connection(path_, Access::Create, Milliseconds(0));
        createSchema(connection);
        connection.execute(
            "CREATE TABLE t(id INTEGER PRIMARY KEY, text);"
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500)"
            " INSERT INTO t SELECT i, hex(randomblob(400)) FROM n");
        before_ = connection.valueOf(kSum);
    }
    ~SealedJournal() override { setUris(0); }

    /// So that a path can say what kind of disk there is; SQLite takes that before it begins.
    static void setUris(int isOn) {
        sqlite3_shutdown();
        sqlite3_config(SQLITE_CONFIG_URI, isOn);
    }

    std::unique_ptr<Connection> open() const {
        const char* const disk = GetParam() == 512 ? "?psow=1" : "?psow=0";
        auto connection =
            std::make_unique<Connection>("file:" + path_ + disk, Access::Write, Milliseconds(0));
        connection->execute("PRAGMA synchronous = FULL; PRAGMA cache_size = 20");
        return connection;
    }

    std::string journal() const { return test::contentOf(path_ + "-journal"); }

    /// Kills within a change: in the files is what there is when this one is to be brought to the disk.
    void killIn(const std::string& sql, const std::string& kind = "delete",
                const std::string& ending = "") const {
        std::string file;
        std::string beside;
        {
            test::FaultyVfs faulty;
            const auto connection = open();
            connection->execute(("PRAGMA journal_mode = " + kind).c_str());
            faulty.onCall([&](const test::VfsCall& call) {
                const bool isNow = call.kind == Kind::Sync && call.path == path_ + ending;
                if (isNow) file = test::contentOf(path_);
                if (isNow) beside = journal();
                return isNow ? SQLITE_FULL : SQLITE_OK;
            });
            EXPECT_THROW(connection->execute(sql.c_str()), vfs::Exception);
        }
        test::makeFile(path_, file);
        test::makeFile(path_ + "-journal", beside);
    }

    std::optional<ErrorCode> codeOfReading() const {
        try {
            open()->valueOf(kSum);
            return std::nullopt;
        } catch (const vfs::Exception& failure) {
            return failure.getErrorCode();
        }
    }

    void damage(std::size_t at) const {
        std::string bytes = journal();
        bytes[at] = static_cast<char>(bytes[at] ^ 1);
        test::writeInPlace(path_ + "-journal", bytes);
    }

    static constexpr const char* kSum = "SELECT count(*) || sum(length(text)) || max(text) FROM t";

    test::TempTree tree_{test::fastFolder()};
    const std::string path_ = tree_ / "file.db";
    std::string before_;
};

TEST_P(SealedJournal, EachHeaderAndEachPageHasItsSeal) {
    killIn("UPDATE t SET text = hex(randomblob(400))");
    const std::string bytes = journal();
    const std::size_t sector = GetParam();
    std::size_t headers = 0;
    for (std::size_t at = 0; at < bytes.size(); ++headers) {
        ASSERT_EQ(numberAt(bytes, at + 20), sector);
        EXPECT_EQ(numberAt(bytes, at + kPlainHeader, 8),
                  XXH3_64bits_withSeed(bytes.data() + at, kPlainHeader, at));
        const std::size_t end = at + sector + numberAt(bytes, at + 8) * kRecord;
        for (at += sector; at < end; at += kRecord) {
            EXPECT_TRUE(PageSeals::fits(bytes.data() + at + 4, numberAt(bytes, at)));
        }
        at = (at + sector - 1) / sector * sector;
    }
    EXPECT_GT(headers, 2U);
    EXPECT_EQ(open()->valueOf(kSum), before_);
    EXPECT_EQ(PageSeals::firstBroken(test::contentOf(path_)), 0U);
}

TEST_P(SealedJournal, DamageInAnyOfItIsNotBroughtBack) {
    killIn("UPDATE t SET text = hex(randomblob(400))");
    const std::string whole = journal();
    for (const std::size_t at : {std::size_t{9}, std::size_t{30}, GetParam() + kRecord - 1,
                                 GetParam() + kRecord / 2, whole.size() - kRecord / 2}) {
        damage(at);
        EXPECT_EQ(codeOfReading(), ErrorCode::NotRecoverable) << at;
        test::writeInPlace(path_ + "-journal", whole);
    }
    EXPECT_EQ(codeOfReading(), std::nullopt);
}

TEST_P(SealedJournal, DamageInThatOfAChangeThatIsGoingOnIsNotBroughtBack) {
    const auto connection = open();
    connection->execute("BEGIN; UPDATE t SET text = 'other'");
    damage(GetParam() + kRecord / 2);
    connection->execute("ROLLBACK");  // SQLite keeps to itself what that comes to
    try {
        connection->valueOf(kSum);
        ADD_FAILURE() << "something was brought back";
    } catch (const vfs::Exception& failure) {
        EXPECT_EQ(failure.getErrorCode(), ErrorCode::NotRecoverable);
        EXPECT_THAT(failure.what(), testing::HasSubstr("the journal beside the file"));
    }
    EXPECT_EQ(codeOfReading(), ErrorCode::NotRecoverable);
}

// None of ours, but who has the lock may ask for it.
TEST_P(SealedJournal, OneThatWouldBeKeptIsEmptied) {
    {
        const auto connection = open();
        connection->execute("PRAGMA journal_mode = PERSIST; UPDATE t SET text = hex(randomblob(400))");
        EXPECT_EQ(journal(), "");
        before_ = connection->valueOf(kSum);
    }
    EXPECT_EQ(open()->valueOf(kSum), before_);
    killIn("UPDATE t SET text = '' WHERE id = 1", "persist");
    EXPECT_EQ(open()->valueOf(kSum), before_);
}

// A log that was to be left goes on, and changes the file without the journal that still lies there.
TEST_P(SealedJournal, OneThatNeverReachedTheDiskDoesNotMindALog) {
    open()->execute("PRAGMA journal_mode = WAL");
    killIn("PRAGMA journal_mode = DELETE", "wal", "-journal");
    ASSERT_GT(journal().size(), kRecord);
    open()->execute("UPDATE t SET text = 'other'; CREATE TABLE more(id); PRAGMA wal_checkpoint(TRUNCATE)");
    ASSERT_GT(journal().size(), kRecord);
    EXPECT_EQ(open()->valueOf("SELECT min(text) || max(text) FROM t"), "otherother");
    open()->execute("PRAGMA journal_mode = DELETE; UPDATE t SET text = 'more'");
    EXPECT_EQ(open()->valueOf("SELECT min(text) || max(text) FROM t"), "moremore");
}

INSTANTIATE_TEST_SUITE_P(Sector, SealedJournal, testing::Values(512U, 4096U));

}  // namespace
