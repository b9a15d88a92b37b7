// What SQLite and the system tell, in terms of a store.

#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Names.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Statement.hpp>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cerrno>
#include <functional>
#include <new>

namespace {

namespace vfs = foundation::storage::vfs;
using namespace foundation::storage::sqlite;
using testing::HasSubstr;
using vfs::ErrorCode;

struct Meaning {
    int result;
    int systemError;
    ErrorCode code;
};

constexpr Meaning kMeanings[] = {
    {SQLITE_BUSY, 0, ErrorCode::TemporarilyBusy},
    {SQLITE_BUSY_SNAPSHOT, 0, ErrorCode::TemporarilyBusy},
    {SQLITE_LOCKED, 0, ErrorCode::TemporarilyBusy},
    {SQLITE_PROTOCOL, 0, ErrorCode::TemporarilyBusy},
    {SQLITE_FULL, 0, ErrorCode::NoSpace},
    {SQLITE_TOOBIG, 0, ErrorCode::FileTooLarge},
    {SQLITE_READONLY, 0, ErrorCode::ReadOnlyStorage},
    {SQLITE_READONLY_DIRECTORY, 0, ErrorCode::AccessDenied},
    {SQLITE_READONLY_DBMOVED, 0, ErrorCode::IOError},
    {SQLITE_READONLY_ROLLBACK, 0, ErrorCode::IOError},
    {SQLITE_READONLY_RECOVERY, 0, ErrorCode::IOError},
    {SQLITE_READONLY_CANTINIT, 0, ErrorCode::IOError},
    {SQLITE_PERM, 0, ErrorCode::AccessDenied},
    {SQLITE_AUTH, 0, ErrorCode::AccessDenied},
    {SQLITE_CANTOPEN, EACCES, ErrorCode::AccessDenied},
    {SQLITE_CANTOPEN, EPERM, ErrorCode::AccessDenied},
    {SQLITE_CANTOPEN, EROFS, ErrorCode::ReadOnlyStorage},
    {SQLITE_CANTOPEN, EMFILE, ErrorCode::TemporarilyBusy},
    {SQLITE_CANTOPEN, ENFILE, ErrorCode::TemporarilyBusy},
    {SQLITE_CANTOPEN, ENOENT, ErrorCode::IOError},
    {SQLITE_IOERR_WRITE, EFBIG, ErrorCode::NoSpace},
    {SQLITE_IOERR_WRITE, ENOSPC, ErrorCode::NoSpace},
    {SQLITE_IOERR_WRITE, EDQUOT, ErrorCode::NoSpace},
    {SQLITE_IOERR_READ, EIO, ErrorCode::IOError},
    {SQLITE_IOERR_READ, 0, ErrorCode::IOError},
    {SQLITE_IOERR_DATA, 0, ErrorCode::NotRecoverable},
    {SQLITE_CORRUPT, 0, ErrorCode::NotRecoverable},
    {SQLITE_NOTADB, 0, ErrorCode::NotRecoverable},
    {SQLITE_CONSTRAINT_PRIMARYKEY, 0, ErrorCode::NotRecoverable},
    {SQLITE_MISMATCH, 0, ErrorCode::NotRecoverable},
    {SQLITE_ERROR, 0, ErrorCode::NotRecoverable},
    {SQLITE_MISUSE, 0, ErrorCode::IOError},
};

TEST(SqliteErrors, EachResultHasItsCode) {
    for (const Meaning& row : kMeanings) {
        EXPECT_EQ(storageCode(row.result, row.systemError), row.code)
            << sqlite3_errstr(row.result) << ", " << row.systemError;
    }
}

/// Code and text of a failure of storage.
std::pair<ErrorCode, std::string> failureOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const vfs::Exception& failure) {
        return {failure.getErrorCode(), failure.what()};
    }
    return {};
}

TEST(SqliteErrors, OfTheSystemHaveTheirCodeWhereAStoreIsReached) {
    const std::pair<int, ErrorCode> kCodes[] = {
        {ENOENT, ErrorCode::NotFound},       {ENOTDIR, ErrorCode::NotFound},
        {ENAMETOOLONG, ErrorCode::NotFound}, {EEXIST, ErrorCode::AlreadyExists},
        {EACCES, ErrorCode::AccessDenied},   {EIO, ErrorCode::IOError},
    };
    for (const auto& [error, code] : kCodes) {
        const auto [found, text] = failureOf([error = error] { failWithSystem(error, "It fails"); });
        EXPECT_EQ(found, code) << error;
        EXPECT_THAT(text, HasSubstr("It fails: "));
    }
}

TEST(SqliteErrors, OfWhatIsMissingSayNothingOfWhatIsInAnOpenStore) {
    for (const int error : {ENOENT, ENOTDIR, EEXIST}) {
        EXPECT_EQ(failureOf([error] { failInUse(error, "It fails"); }).first, ErrorCode::IOError) << error;
    }
}

class SqliteConnection : public testing::Test {
protected:
    SqliteConnection() { EXPECT_EQ(sqlite3_open(":memory:", &connection_), SQLITE_OK); }
    ~SqliteConnection() override { EXPECT_EQ(sqlite3_close(connection_), SQLITE_OK); }

    sqlite3* connection_ = nullptr;
};

TEST_F(SqliteConnection, WantOfMemoryIsBadAlloc) {
    EXPECT_THROW(failWith(connection_, SQLITE_NOMEM), std::bad_alloc);
    EXPECT_THROW(failWith(connection_, SQLITE_IOERR_NOMEM), std::bad_alloc);
    EXPECT_THROW(failToOpen(connection_, SQLITE_NOMEM), std::bad_alloc);
}

TEST_F(SqliteConnection, WhatSqliteSaysOfAStatementIsTold) {
    const auto [code, text] = failureOf([this] { Statement(connection_, "SELECT 1 FROM missing"); });
    EXPECT_EQ(code, ErrorCode::NotRecoverable);
    EXPECT_EQ(text, "SQLite: SQL logic error (no such table: missing)");
}

TEST_F(SqliteConnection, AParameterThatAStatementDoesNotHaveIsAFailure) {
    Statement statement(connection_, "SELECT ?1");
    EXPECT_NO_THROW(statement.bind(1, std::int64_t{1}));
    EXPECT_EQ(failureOf([&] { statement.bind(2, std::int64_t{1}); }).first, ErrorCode::IOError);
    EXPECT_EQ(failureOf([&] { statement.bind(2, "bytes"); }).first, ErrorCode::IOError);
}

TEST(SqliteNames, HalfACharacterIsDamage) {
    const std::u16string name = u"a\u4E2D\xD800";
    const std::string bytes = encodeName(name);
    EXPECT_EQ(decodeName(bytes), name);
    EXPECT_EQ(failureOf([&] { decodeName(bytes.substr(1)); }).first, ErrorCode::NotRecoverable);
}

}  // namespace
