#pragma once

#include <pkgcore/portable/storage/providers/sqlite/Checksum.hpp>
#include <pkgcore/portable/storage/providers/sqlite/KnownFolder.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Patience.hpp>
#include <pkgcore/portable/storage/providers/sqlite/SealedVfs.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Sql.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Statement.hpp>

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

namespace foundation::storage::sqlite {

using Milliseconds = std::chrono::milliseconds;

/// How a database file is opened.
enum class Access : unsigned char { Read, Write, Create };

/// A connection to a database of which each page has a seal, for one thread at a time. Failures are
/// exceptions of Errors.hpp.
class Connection {
public:
    /// Opens the file without reading any of it. Waits up to `busyTime` for others, in all its calls
    /// together.
    Connection(const std::string& path, Access access, Milliseconds busyTime);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// For the calls that follow.
    void setPatience(Patience patience) noexcept { patience_ = patience; }
    Patience& patience() noexcept { return patience_; }

    sqlite3* get() const noexcept { return handle_.get(); }

    /// Where the file is, whatever the working directory becomes.
    std::string fullPath() const;

    /// Runs statements that give no rows of interest.
    void execute(const char* sql);

    /// The first column of the first row, as a text; empty without a row.
    std::string valueOf(const char* sql);

    /// Prepared at the first call.
    Statement& statement(Sql sql);

    const Sealer& sealer() const noexcept { return sealer_; }
    void setKey(std::int64_t key) noexcept { sealer_ = Sealer(key); }

    /// Another number than before when anything in the store has changed that a statement of this connection
    /// has seen, or made.
    std::uint32_t state() const noexcept;

    /// For pages that are read from now on.
    void setPageCheck(PageCheck check) noexcept { files_.check() = check; }

    /// Has them read from the file again.
    void forgetPages() noexcept;

    KnownFolder& knownFolder() noexcept { return knownFolder_; }

    /// A number that no entry and no content has or had, within a writing transaction.
    std::int64_t newNumber();
    /// What newNumber() has put aside is not to be had after a rollback.
    void forgetNumbers() noexcept { nextNumber_ = endNumber_ = 0; }

private:
    struct Close {
        void operator()(sqlite3* handle) const noexcept;
    };

    static int onBusy(void* connection, int count) noexcept;
    void configure();
    void takeNumbers();

    Patience patience_;
    SealedVfs files_;
    std::unique_ptr<sqlite3, Close> handle_;
    std::array<std::unique_ptr<Statement>, kSqlCount> statements_;
    Sealer sealer_{0};
    KnownFolder knownFolder_;
    std::int64_t nextNumber_ = 0;
    std::int64_t endNumber_ = 0;
};

/// For the time in which only rows are read that are compared with seals of their own before they are used.
class SealedRows {
public:
    explicit SealedRows(Connection& connection) noexcept : connection_(connection) {
        connection_.setPageCheck(PageCheck::LinksOfLongRows);
    }
    ~SealedRows() { connection_.setPageCheck(PageCheck::Whole); }
    SealedRows(const SealedRows&) = delete;
    SealedRows& operator=(const SealedRows&) = delete;

private:
    Connection& connection_;
};

/// From begin to commit; rolled back unless it is committed.
class Transaction {
public:
    Transaction(Connection& connection, Access access);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();

private:
    void rollBack() noexcept;

    Connection& connection_;
    bool isCommitted_ = false;
};

}  // namespace foundation::storage::sqlite
