#pragma once

#include <pkgcore/portable/storage/providers/sqlite/Connection.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Gate.hpp>
#include <pkgcore/portable/storage/providers/sqlite/OwnProcess.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Pins.hpp>
#include <pkgcore/portable/storage/providers/sqlite/SqliteProvider.hpp>

#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

namespace foundation::storage::sqlite {

/// A store that is open: connections, of which each thread takes one as long as it needs it, and pins. Any
/// thread may call any member at any time. In a child of fork(), all that it does is to fail, and to go
/// without a trace.
class Store {
public:
    /// Opens a file that is known to be a store. Throws an IOError if it goes meanwhile.
    Store(const std::string& path, const provider::SqliteOptions& options);
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    /// Calls body(connection) within a transaction that sees one state of the store.
    template <typename Body>
    auto read(Body body) {
        requireOwnProcess();
        Lease lease(*this, Patience(options_.busyTime));
        Transaction transaction(lease.connection(), Access::Read);
        return finish(lease.connection(), body, [&transaction] { transaction.commit(); });
    }

    /// Calls body(connection) for one statement, which sees one state of the store.
    template <typename Body>
    auto look(Body body) {
        requireOwnProcess();
        Lease lease(*this, Patience(options_.busyTime));
        return body(lease.connection());
    }

    /// Calls body(connection) within a transaction, and commits it. Nothing is changed if it throws, unless
    /// the store has gone.
    template <typename Body>
    auto write(Body body) {
        requireOwnProcess();
        requireWritable();
        return inTurn([this, &body](Connection& connection) { return change(connection, body); });
    }

    Pins& pins() noexcept { return pins_; }

    /// Of an entry, also among those of other stores.
    provider::Identity identityOf(std::int64_t entry) const noexcept;

    /// Returns when the changes that were made through this store are on the disk: with full durability they
    /// are already, and one for reading alone has none. With normal durability, those of others, too.
    void sync();

    /// Writes all of it anew without the free pages. Nobody may be reading or writing meanwhile; "busy" then.
    void compact();

    /// Throws "read-only" if it is.
    void requireWritable() const;

private:
    /// A connection for one thread.
    class Lease {
    public:
        Lease(Store& store, Patience patience) : store_(store), connection_(store.take(patience)) {}
        ~Lease() { store_.giveBack(std::move(connection_)); }
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;

        Connection& connection() noexcept { return *connection_; }

    private:
        Store& store_;
        std::unique_ptr<Connection> connection_;
    };

    /// Calls use(connection) when no other thread of the process is at that.
    template <typename Use>
    auto inTurn(Use use) {
        Patience patience(options_.busyTime);
        const Passage passage(*gate_, patience);
        Lease lease(*this, patience);
        return use(lease.connection());
    }

    /// What was committed to a file that had just gone is lost, which SQLite does not see.
    template <typename Body>
    auto change(Connection& connection, Body& body) {
        Transaction transaction(connection, Access::Write);
        requireInPlace();
        return finish(connection, body, [this, &transaction] {
            transaction.commit();
            requireNotGone();
        });
    }

    template <typename Body, typename End>
    static auto finish(Connection& connection, Body& body, End end) {
        if constexpr (std::is_void_v<decltype(body(connection))>) {
            body(connection);
            end();
        } else {
            auto result = body(connection);
            end();
            return result;
        }
    }

    /// Takes over the first connection to the file, as it was before that.
    Store(const provider::Identity& file, std::unique_ptr<Connection> first,
          const provider::SqliteOptions& options);

    void requireOwnProcess() const;

    /// What is written to a file that no path leads to any more is lost. With the rollback journal, SQLite
    /// looks by itself; with a log it does not.
    void requireInPlace() const;
    bool isInPlace() const noexcept;

    /// The same after a change, which was made unless the file is known to have gone.
    void requireNotGone() const;

    void prepareToWrite(Connection& connection) const;
    void leaveToParent() noexcept;
    std::unique_ptr<Connection> connect() const;
    std::unique_ptr<Connection> take(Patience patience);
    bool isReusable(const Connection& connection) const noexcept;
    void giveBack(std::unique_ptr<Connection> connection) noexcept;

    OwnProcess process_;
    provider::SqliteOptions options_;
    std::string path_;
    std::int64_t key_ = 0;
    provider::Identity file_;  ///< without a number
    Pins pins_;
    std::unique_ptr<Gate> gate_ = std::make_unique<Gate>();
    std::mutex mutex_;
    std::vector<std::unique_ptr<Connection>> idle_;
};

using SharedStore = std::shared_ptr<Store>;

}  // namespace foundation::storage::sqlite
