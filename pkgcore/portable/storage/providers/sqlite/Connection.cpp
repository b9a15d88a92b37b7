#include <pkgcore/portable/storage/providers/sqlite/Connection.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>

#include <sqlite3.h>

#include <algorithm>
#include <new>

namespace foundation::storage::sqlite {

namespace {

/// So many numbers are taken at once, so that the row that counts them is seldom written.
constexpr std::int64_t kNumbersAtOnce = 256;

int flagsOf(Access access) noexcept {
    // A connection is used by one thread at a time; each result code is the precise one.
    constexpr int kAlways = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    switch (access) {
        case Access::Read:
            return kAlways | SQLITE_OPEN_READONLY;
        case Access::Write:
            return kAlways | SQLITE_OPEN_READWRITE;
        case Access::Create:
            break;
    }
    return kAlways | SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
}

}  // namespace

void Connection::Close::operator()(sqlite3* handle) const noexcept { sqlite3_close_v2(handle); }

Connection::Connection(const std::string& path, Access access, Milliseconds busyTime) : patience_(busyTime) {
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &handle, flagsOf(access), files_.name());
    handle_.reset(handle);  // there is one after most failures, too
    if (handle == nullptr) {
        throw std::bad_alloc();
    }
    if (result != SQLITE_OK) {
        failToOpen(handle, result);
    }
    configure();
}

Connection::~Connection() = default;

// A file from somewhere else must not be able to run anything.
void Connection::configure() {
    sqlite3_db_config(get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(get(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(get(), SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(get(), SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    sqlite3_busy_handler(get(), onBusy, this);
}

/// Waits a little, and longer each time; 0 when the time is over.
int Connection::onBusy(void* connection, int count) noexcept {
    constexpr int kDoublings = 8;
    const auto pause = std::chrono::microseconds(50) * (1 << std::min(count, kDoublings));
    return static_cast<Connection*>(connection)->patience_.rest(pause) ? 1 : 0;
}

std::string Connection::fullPath() const { return sqlite3_db_filename(get(), "main"); }

void Connection::execute(const char* sql) {
    const int result = sqlite3_exec(get(), sql, nullptr, nullptr, nullptr);
    if (result != SQLITE_OK) {
        failWith(get(), result);
    }
}

std::string Connection::valueOf(const char* sql) {
    std::string value;
    const auto keepFirst = [](void* out, int count, char** texts, char** /*names*/) {
        auto& text = *static_cast<std::string*>(out);
        if (count > 0 && texts[0] != nullptr && text.empty()) text = texts[0];
        return 0;
    };
    const int result = sqlite3_exec(get(), sql, keepFirst, &value, nullptr);
    if (result != SQLITE_OK) {
        failWith(get(), result);
    }
    return value;
}

Statement& Connection::statement(Sql sql) {
    std::unique_ptr<Statement>& kept = statements_[static_cast<std::size_t>(sql)];
    if (!kept) {
        kept = std::make_unique<Statement>(get(), textOf(sql));
    }
    return *kept;
}

std::uint32_t Connection::state() const noexcept {
    std::uint32_t state = 0;
    sqlite3_file_control(get(), "main", SQLITE_FCNTL_DATA_VERSION, &state);
    return state;
}

void Connection::forgetPages() noexcept { sqlite3_db_release_memory(get()); }

void Connection::takeNumbers() {
    const std::int64_t next = readStoreRow(*this).next;
    if (next > kMaxNumber - kNumbersAtOnce) {
        fail(vfs::ErrorCode::NoSpace, "The store has no number left for what is new");
    }
    writeNextNumber(*this, next + kNumbersAtOnce);
    nextNumber_ = next;
    endNumber_ = next + kNumbersAtOnce;
}

std::int64_t Connection::newNumber() {
    if (nextNumber_ == endNumber_) {
        takeNumbers();
    }
    return nextNumber_++;
}

Transaction::Transaction(Connection& connection, Access access) : connection_(connection) {
    run(connection.statement(access == Access::Read ? Sql::BeginRead : Sql::BeginWrite));
}

void Transaction::commit() {
    run(connection_.statement(Sql::Commit));
    isCommitted_ = true;
}

Transaction::~Transaction() {
    if (!isCommitted_) {
        connection_.forgetNumbers();
        rollBack();
    }
}

void Transaction::rollBack() noexcept {
    // SQLite itself has done it after some failures.
    if (sqlite3_get_autocommit(connection_.get()) != 0) {
        return;
    }
    try {
        run(connection_.statement(Sql::Rollback));
    } catch (const std::exception&) {
        // Closing the connection gives up the rest.
    }
}

}  // namespace foundation::storage::sqlite
