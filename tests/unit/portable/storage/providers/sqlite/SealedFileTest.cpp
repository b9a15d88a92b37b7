// A database of which each page has a seal, by SQL.

#include <pkgcore/portable/storage/providers/sqlite/Connection.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>

#include "tests/sqlite/FaultyVfs.hpp"
#include "tests/support/ManyThreads.hpp"
#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/storage/PageSeals.hpp"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <array>
#include <memory>
#include <vector>

namespace {

namespace vfs = foundation::storage::vfs;
using namespace foundation::storage::sqlite;
using test::PageSeals;
using vfs::ErrorCode;

constexpr std::size_t kPageSize = PageSeals::kPageSize;

/// A table of three levels, and one whose rows take some pages each.
constexpr const char* kFilling =
    "CREATE TABLE few(id INTEGER PRIMARY KEY, text);"
    "CREATE TABLE large(id INTEGER PRIMARY KEY, bytes);"
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 200)"
    " INSERT INTO few SELECT i, hex(randomblob(400)) FROM n;"
    "INSERT INTO large SELECT id, randomblob(20000) FROM few WHERE id <= 10";

constexpr const char* kReading =
    "SELECT total(length(text)) FROM few UNION ALL SELECT total(length(hex(bytes))) FROM large";

class SealedFile : public testing::Test {
protected:
    SealedFile() {
        Connection connection(path, Access::Create, Milliseconds(0));
        createSchema(connection);
        connection.execute(kFilling);
    }

    std::unique_ptr<Connection> open() const {
        return std::make_unique<Connection>(path, Access::Write, Milliseconds(5000));
    }
    std::string content() const { return test::contentOf(path); }
    void replaceContent(const std::string& bytes) const { test::writeInPlace(path, bytes); }

    /// Of the page that a table begins with, from 0 on.
    std::size_t rootOf(const std::string& table) const {
        return std::stoul(open()->valueOf(
                   ("SELECT rootpage FROM sqlite_schema WHERE name = '" + table + "'").c_str())) -
               1;
    }

    /// A page with a part of a row that goes on in the next one, from 0 on.
    static std::size_t restOfARow(const std::string& file) {
        for (std::size_t at = kPageSize; at < file.size(); at += kPageSize) {
            const std::string_view link(&file[at], 4);
            if (link[0] == 0 && link != std::string_view("\0\0\0\0", 4)) return at / kPageSize;
        }
        throw std::runtime_error("no row takes several pages");
    }

    /// What it comes to on a new connection.
    std::optional<ErrorCode> codeOf(const char* sql) const {
        try {
            open()->execute(sql);
            return std::nullopt;
        } catch (const vfs::Exception& failure) {
            message = failure.what();
            return failure.getErrorCode();
        }
    }

    static sqlite3_file& fileOf(const Connection& connection) {
        sqlite3_file* file = nullptr;
        sqlite3_file_control(connection.get(), "main", SQLITE_FCNTL_FILE_POINTER, &file);
        return *file;
    }
    static int read(const Connection& connection, std::string& out, std::size_t offset) {
        sqlite3_file& file = fileOf(connection);
        return file.pMethods->xRead(&file, out.data(), static_cast<int>(out.size()),
                                    static_cast<sqlite3_int64>(offset));
    }

    test::TempTree tree{test::fastFolder()};
    const std::string path = tree / "file.db";
    mutable std::string message;
};

TEST_F(SealedFile, EachPageThatIsWrittenHasItsSeal) {
    EXPECT_GT(content().size(), 50 * kPageSize);
    EXPECT_EQ(content()[20], 12) << "bytes that SQLite leaves free";
    EXPECT_EQ(PageSeals::firstBroken(content()), 0U);
    open()->execute("UPDATE few SET text = text || 'x'; DELETE FROM large WHERE id = 3");
    EXPECT_EQ(PageSeals::firstBroken(content()), 0U);
    EXPECT_EQ(codeOf(kReading), std::nullopt);
}

TEST_F(SealedFile, ABitInAPageByWhichRowsAreFoundIsDamage) {
    std::string bytes = content();
    char& key = bytes[rootOf("few") * kPageSize + 2000];
    key = static_cast<char>(key ^ 1);
    replaceContent(bytes);
    EXPECT_EQ(codeOf("SELECT text FROM few WHERE id = 100"), ErrorCode::NotRecoverable);
    EXPECT_THAT(message, testing::HasSubstr("does not fit its checksum"));
    EXPECT_EQ(codeOf("SELECT id FROM large"), std::nullopt) << "no page of it is changed";
}

TEST_F(SealedFile, OfTheRestOfARowWithASealTheLinkAloneIsCompared) {
    const std::string whole = content();
    const std::size_t rest = restOfARow(whole) * kPageSize;
    const std::size_t few = rootOf("few") * kPageSize;
    std::string page(kPageSize, '\0');
    const auto readWith = [&](std::size_t changed, std::size_t offset) {
        std::string bytes = whole;
        bytes[changed] = static_cast<char>(bytes[changed] ^ 64);
        replaceContent(bytes);
        const auto connection = open();
        EXPECT_EQ(read(*connection, page, offset), SQLITE_IOERR_DATA) << changed;
        const SealedRows rows(*connection);
        return read(*connection, page, offset);
    };
    EXPECT_EQ(readWith(rest + 4, rest), SQLITE_OK);
    EXPECT_EQ(page[4], static_cast<char>(whole[rest + 4] ^ 64)) << "as it is";
    EXPECT_EQ(readWith(rest + 4083, rest), SQLITE_OK);
    for (const int at : {0, 1, 2, 3, 4084, 4087}) {
        EXPECT_EQ(readWith(rest + static_cast<std::size_t>(at), rest), SQLITE_IOERR_DATA) << at;
    }
    EXPECT_EQ(readWith(few, few), SQLITE_IOERR_DATA) << "a page of a table that looks like none";
    EXPECT_EQ(readWith(few + 2000, few), SQLITE_IOERR_DATA);
    EXPECT_EQ(readWith(2000, 0), SQLITE_IOERR_DATA) << "the first page";
}

TEST_F(SealedFile, PagesAreComparedWholeAgainBehindRowsWithSeals) {
    std::string bytes = content();
    const std::size_t rest = restOfARow(bytes) * kPageSize;
    bytes[rest + 100] = static_cast<char>(bytes[rest + 100] ^ 1);
    replaceContent(bytes);
    const auto connection = open();
    std::string page(kPageSize, '\0');
    { const SealedRows rows(*connection); }
    EXPECT_EQ(read(*connection, page, rest), SQLITE_IOERR_DATA);
}

TEST_F(SealedFile, APageInThePlaceOfAnotherOneIsDamage) {
    const std::size_t few = rootOf("few") * kPageSize;
    std::string bytes = content();
    bytes.replace(few, kPageSize, bytes, rootOf("large") * kPageSize, kPageSize);
    replaceContent(bytes);
    EXPECT_EQ(codeOf("SELECT count(*) FROM few"), ErrorCode::NotRecoverable);
}

TEST_F(SealedFile, APageOfZerosIsDamageWhereOneIsInUse) {
    for (const std::string table : {"few", "large", "entry"}) {
        const std::string whole = content();
        std::string bytes = whole;
        bytes.replace(rootOf(table) * kPageSize, kPageSize, kPageSize, '\0');
        replaceContent(bytes);
        EXPECT_EQ(codeOf(("SELECT count(*) FROM " + table).c_str()), ErrorCode::NotRecoverable) << table;
        replaceContent(whole);
    }
}

TEST_F(SealedFile, AFileThatIsCutOffIsDamageFromTheFirstPageOn) {
    const std::string whole = content();
    for (const std::size_t missing :
         {std::size_t{1}, std::size_t{8}, std::size_t{2000}, kPageSize, 9 * kPageSize}) {
        test::makeFile(path, whole.substr(0, whole.size() - missing));
        EXPECT_EQ(codeOf(kReading), ErrorCode::NotRecoverable) << missing;
    }
}

TEST_F(SealedFile, DamageWithinAChangeLeavesTheFileAsItWas) {
    std::string bytes = content();
    char& byte = bytes[rootOf("large") * kPageSize + 4000];
    byte = static_cast<char>(byte ^ 4);
    replaceContent(bytes);
    EXPECT_EQ(codeOf("BEGIN; UPDATE few SET text = 'other'; DELETE FROM large; COMMIT"),
              ErrorCode::NotRecoverable);
    EXPECT_TRUE(content() == bytes);
    EXPECT_FALSE(test::isThere(path + "-journal"));
}

TEST_F(SealedFile, APartOfAPageIsVerifiedWithAllOfIt) {
    std::string bytes = content();
    std::string part(kPageSize - 8, '\0');
    const std::size_t page = 5 * kPageSize;
    EXPECT_EQ(read(*open(), part, page), SQLITE_OK);
    EXPECT_TRUE(part == bytes.substr(page, part.size()));
    bytes[page + 4090] = static_cast<char>(bytes[page + 4090] ^ 1);
    replaceContent(bytes);
    EXPECT_EQ(read(*open(), part, page), SQLITE_IOERR_DATA);
    EXPECT_EQ(read(*open(), part, page + 4), SQLITE_IOERR_DATA);
    EXPECT_EQ(read(*open(), part, page + 16), SQLITE_IOERR_READ) << "of two pages";
}

// SQLite reads it without a lock, while it may be half written.
TEST_F(SealedFile, TheHeaderAloneIsReadAsItIs) {
    std::string bytes = content();
    bytes[27] = static_cast<char>(bytes[27] + 1);
    replaceContent(bytes);
    std::string header(100, '\0');
    const auto connection = open();
    EXPECT_EQ(read(*connection, header, 0), SQLITE_OK);
    EXPECT_EQ(header, bytes.substr(0, 100));
    header.resize(101);
    EXPECT_EQ(read(*connection, header, 0), SQLITE_IOERR_DATA);
    EXPECT_EQ(codeOf(kReading), ErrorCode::NotRecoverable);
}

TEST_F(SealedFile, WhatIsWrittenIsAPageAndStaysAsItIsInMemory) {
    const auto connection = open();
    sqlite3_file& file = fileOf(*connection);
    const std::string page = test::someBytes(kPageSize);
    std::string given = page;
    EXPECT_EQ(file.pMethods->xWrite(&file, given.data(), kPageSize, 3 * kPageSize), SQLITE_OK);
    EXPECT_TRUE(given == page);
    EXPECT_EQ(PageSeals::firstBroken(content()), 0U);
    EXPECT_EQ(file.pMethods->xWrite(&file, given.data(), 512, 3 * kPageSize), SQLITE_IOERR_WRITE);
    EXPECT_EQ(file.pMethods->xWrite(&file, given.data(), kPageSize, 512), SQLITE_IOERR_WRITE);
    EXPECT_EQ(PageSeals::firstBroken(content()), 0U);
}

// SQLite leaves pages unwritten that are given back in the transaction that took them.
TEST_F(SealedFile, PagesThatWereNeverWrittenMayBeRead) {
    open()->execute(
        "PRAGMA secure_delete = OFF; BEGIN;"
        "INSERT INTO large SELECT id + 100, randomblob(20000) FROM few WHERE id <= 30;"
        "INSERT INTO large SELECT id + 200, randomblob(20000) FROM few WHERE id <= 30;"
        "DELETE FROM large WHERE id BETWEEN 101 AND 130; COMMIT");
    const std::string hole(kPageSize, '\0');
    std::size_t holes = 0;
    const std::string bytes = content();
    for (std::size_t at = 0; at < bytes.size(); at += kPageSize) {
        holes += bytes.compare(at, kPageSize, hole) == 0 ? 1U : 0U;
    }
    EXPECT_GT(holes, 100U);
    EXPECT_EQ(codeOf("VACUUM"), std::nullopt) << message;
    EXPECT_LT(content().size(), bytes.size());
    EXPECT_EQ(PageSeals::firstBroken(content()), 0U);
    EXPECT_EQ(open()->valueOf("PRAGMA integrity_check"), "ok");
}

TEST_F(SealedFile, LiesOverWhatIsTheDefaultWhenAConnectionIsMade) {
    {
        test::FaultyVfs faulty;
        unsigned calls = 0;
        faulty.onCall([&](const test::VfsCall& call) {
            const bool reads = call.kind == test::VfsCall::Kind::Read && call.path == path;
            return reads && ++calls == 4 ? SQLITE_IOERR_READ : SQLITE_OK;
        });
        EXPECT_EQ(codeOf(kReading), ErrorCode::IOError);
        EXPECT_EQ(codeOf(kReading), std::nullopt) << "as long as nothing fails";
        EXPECT_GT(calls, 50U);
    }
    EXPECT_EQ(codeOf(kReading), std::nullopt);
}

/// Under all connections that are made while it lives, with what a test puts in.
class BelowAll {
public:
    BelowAll() : vfs(*sqlite3_vfs_find(nullptr)) {
        vfs.zName = "below";
        sqlite3_vfs_register(&vfs, 1);
    }
    ~BelowAll() { sqlite3_vfs_unregister(&vfs); }
    BelowAll(const BelowAll&) = delete;
    BelowAll& operator=(const BelowAll&) = delete;

    sqlite3_vfs vfs;
};

TEST_F(SealedFile, WhatIsNoMatterOfFilesIsAskedBelow) {
    BelowAll below;
    below.vfs.xSleep = [](sqlite3_vfs*, int microseconds) { return microseconds + 1; };
    below.vfs.xRandomness = [](sqlite3_vfs*, int size, char* out) { return *out = 'r', size - 1; };
    below.vfs.xCurrentTime = [](sqlite3_vfs*, double* out) { return *out = 4.5, SQLITE_OK; };
    below.vfs.xCurrentTimeInt64 = [](sqlite3_vfs*, sqlite3_int64* out) { return *out = 45, SQLITE_OK; };
    const SealedVfs files;
    sqlite3_vfs* const sealed = sqlite3_vfs_find(files.name());
    ASSERT_NE(sealed, nullptr);
    char byte = 0;
    double days = 0;
    sqlite3_int64 milliseconds = 0;
    EXPECT_EQ(sealed->xSleep(sealed, 41), 42);
    EXPECT_EQ(sealed->xRandomness(sealed, 1, &byte), 0);
    EXPECT_EQ(byte, 'r');
    EXPECT_EQ(sealed->xCurrentTime(sealed, &days), SQLITE_OK);
    EXPECT_EQ(days, 4.5);
    EXPECT_EQ(sealed->xCurrentTimeInt64(sealed, &milliseconds), SQLITE_OK);
    EXPECT_EQ(milliseconds, 45);
}

TEST_F(SealedFile, HasTheSectorsOfTheFileBelow) {
    const auto connection = open();
    sqlite3_vfs& usual = *sqlite3_vfs_find(nullptr);
    std::vector<char> memory(static_cast<std::size_t>(usual.szOsFile));
    auto* const below = reinterpret_cast<sqlite3_file*>(memory.data());
    ASSERT_EQ(usual.xOpen(&usual, path.c_str(), below, SQLITE_OPEN_READONLY | SQLITE_OPEN_MAIN_DB, nullptr),
              SQLITE_OK);
    sqlite3_file& file = fileOf(*connection);
    EXPECT_EQ(file.pMethods->xSectorSize(&file), below->pMethods->xSectorSize(below));
    below->pMethods->xClose(below);
}

int timesClosed = 0;

// As the interface of SQLite lets a file system do.
TEST_F(SealedFile, WhatIsOpenedAndFailsAllTheSameIsClosed) {
    BelowAll below;
    timesClosed = 0;
    below.vfs.xOpen = [](sqlite3_vfs*, const char*, sqlite3_file* file, int, int*) {
        static constexpr auto close = [](sqlite3_file*) { return ++timesClosed, SQLITE_OK; };
        static const sqlite3_io_methods methods = {
            1,       close,   nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
            nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
        file->pMethods = &methods;
        return SQLITE_IOERR;
    };
    EXPECT_EQ(codeOf(kReading), ErrorCode::IOError);
    EXPECT_EQ(timesClosed, 1);
}

TEST_F(SealedFile, NothingStaysRegistered) {
    sqlite3_vfs* const usual = sqlite3_vfs_find(nullptr);
    std::string name;
    {
        const SealedVfs files;
        const SealedVfs others;
        name = files.name();
        EXPECT_NE(name, others.name());
        EXPECT_NE(sqlite3_vfs_find(files.name()), nullptr);
        EXPECT_EQ(sqlite3_vfs_find(nullptr), usual) << "other connections have the default";
    }
    EXPECT_EQ(sqlite3_vfs_find(name.c_str()), nullptr);
}

TEST_F(SealedFile, ConnectionsOfManyThreadsComeAndGo) {
    test::inManyThreads([this](int thread) {
        for (int i = 0; i < 20; ++i) {
            const auto connection = open();
            const std::string row = std::to_string(1000 * (thread + 1) + i);
            connection->execute(("INSERT INTO large VALUES(" + row + ", randomblob(9000))").c_str());
            EXPECT_EQ(connection->valueOf(("SELECT length(bytes) FROM large WHERE id = " + row).c_str()),
                      "9000");
        }
    });
    EXPECT_EQ(PageSeals::firstBroken(content()), 0U);
    EXPECT_EQ(open()->valueOf("SELECT count(*) FROM large WHERE id >= 1000"), "160");
}

}  // namespace
