#include <pkgcore/portable/storage/providers/sqlite/Store.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/FreePages.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>

#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <exception>

namespace foundation::storage::sqlite {

using provider::SqliteDurability;
using vfs::ErrorCode;

namespace {

constexpr std::size_t kMaxIdle = 8;

/// Earlier ones can damage a database that has a write-ahead log and several connections.
constexpr int kFirstWithSafeLog = 3'051'003;

bool hasSafeLog() noexcept { return sqlite3_libversion_number() >= kFirstWithSafeLog; }

// Deleted content is not overwritten (Debian's SQLite does that by itself). One megabyte of pages is kept,
// which fits into the cache of a processor: with eight, reading in random order took a tenth longer. Only
// a change may have more of them, eight, before it goes into the file in parts; a number of pages of which
// the lowest byte is zero would be "never" to SQLite. A store may have all the pages that the format has room
// for.
constexpr const char* kTuning =
    "PRAGMA secure_delete = OFF; PRAGMA cache_size = -1024; PRAGMA cache_spill = 2000;"
    "PRAGMA cell_size_check = ON; PRAGMA mmap_size = 0; PRAGMA temp_store = MEMORY;"
    "PRAGMA max_page_count = 4294967294";

/// The end of a journal that is cut off must come to the disk before its file is written again, which
/// "truncate" sees to for full durability alone; a deleted file is never written again.
const char* journalOf(SqliteDurability durability) noexcept {
    if (hasSafeLog()) {
        return "wal";
    }
    return durability == SqliteDurability::Full ? "truncate" : "delete";
}

/// The kind of journal that there is then.
std::string tryJournal(Connection& connection, const std::string& wanted) {
    try {
        return connection.valueOf(("PRAGMA journal_mode = " + wanted).c_str());
    } catch (const vfs::Exception& failure) {
        if (failure.getErrorCode() != ErrorCode::TemporarilyBusy) throw;
        return "unknown";
    }
}

/// Of two connections that change the kind at once each may keep the other one from it, and SQLite lets
/// neither wait then.
void setJournal(Connection& connection, SqliteDurability durability) {
    const std::string wanted = journalOf(durability);
    for (std::string set = tryJournal(connection, wanted); set != wanted;
         set = tryJournal(connection, wanted)) {
        if (!connection.patience().rest(Milliseconds(1))) {
            fail(ErrorCode::TemporarilyBusy, "The store is in use with another kind of journal: " + set);
        }
    }
}

/// With the rollback journal, EXTRA brings its end to the disk, too; otherwise an acknowledged change might
/// be rolled back after all. NORMAL would bring the pages in it to the disk together with its header: after
/// the loss of power half a page may be rolled back, for its checksum sees few of the bytes.
const char* durabilityPragma(SqliteDurability durability) noexcept {
    if (durability == SqliteDurability::Normal) {
        return hasSafeLog() ? "PRAGMA synchronous = NORMAL" : "PRAGMA synchronous = FULL";
    }
    return hasSafeLog() ? "PRAGMA synchronous = FULL" : "PRAGMA synchronous = EXTRA";
}

/// Lets no change of a connection return before it is on the disk.
class FullDurability {
public:
    explicit FullDurability(Connection& connection) : connection_(connection) {
        connection_.execute(durabilityPragma(SqliteDurability::Full));
    }
    // A failure would leave the connection slower than it need be.
    ~FullDurability() {
        sqlite3_exec(connection_.get(), durabilityPragma(SqliteDurability::Normal), nullptr, nullptr,
                     nullptr);
    }
    FullDurability(const FullDurability&) = delete;
    FullDurability& operator=(const FullDurability&) = delete;

private:
    Connection& connection_;
};

constexpr const char* kGone = "The store has gone";

/// Sets the identity of the file that is there; returns the errno, and leaves it as it was, if nobody can
/// say.
int findFile(const std::string& path, provider::Identity& identity) noexcept {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        return errno;
    }
    identity = {status.st_dev, status.st_ino, 0};
    return 0;
}

provider::Identity identityOfFile(const std::string& path) {
    provider::Identity identity;
    if (const int error = findFile(path, identity); error != 0) {
        failInUse(error, kGone);
    }
    return identity;
}

void requireSame(const provider::Identity& found, const provider::Identity& file) {
    if (found != file) {
        fail(ErrorCode::IOError, "Another file has taken the place of the store");
    }
}

std::unique_ptr<Connection> connectTo(const std::string& path, const provider::SqliteOptions& options) {
    const Access access = options.isReadOnly ? Access::Read : Access::Write;
    return std::make_unique<Connection>(path, access, options.busyTime);
}

}  // namespace

// The braces have the file looked at before it is opened: one that took its place after that is found out.
Store::Store(const std::string& path, const provider::SqliteOptions& options)
    : Store{identityOfFile(path), connectTo(path, options), options} {}

Store::Store(const provider::Identity& file, std::unique_ptr<Connection> first,
             const provider::SqliteOptions& options)
    : options_(options),
      path_(first->fullPath()),
      file_(file),
      pins_(path_, Patience(options.busyTime), !options.isReadOnly) {
    first->execute(kTuning);
    {
        Transaction transaction(*first, Access::Read);
        checkSchema(*first);
        key_ = readStoreRow(*first).key;
        transaction.commit();
    }
    requireInPlace();
    prepareToWrite(*first);  // which may change the file, and so comes behind all that may refuse it
    idle_.reserve(kMaxIdle);
    idle_.push_back(std::move(first));
}

provider::Identity Store::identityOf(std::int64_t entry) const noexcept {
    return {file_.device, file_.container, static_cast<std::uint64_t>(entry)};
}

// A log goes into the store and a journal file that holds nothing to be rolled back goes, unless another
// process needs it: the store is one file then, which can be read where nothing can be written. The file is
// looked for when the kind of journal changes. Beside another store in the place of this one, nothing is
// this store's.
Store::~Store() {
    if (process_.isLeft()) {
        leaveToParent();
        return;
    }
    if (!options_.isReadOnly && !idle_.empty() && isInPlace()) {
        // With one connection it is alone.
        idle_.erase(idle_.begin() + 1, idle_.end());
        sqlite3_busy_timeout(idle_.back()->get(), 0);
        // Leaving a log is a change with a rollback journal, of which the disk must have all before the page.
        constexpr const char* kLeaving =
            "PRAGMA synchronous = EXTRA; PRAGMA journal_mode = TRUNCATE; PRAGMA journal_mode = DELETE";
        sqlite3_exec(idle_.back()->get(), kLeaving, nullptr, nullptr, nullptr);
    }
}

/// Closing a connection rolls back, and brings in the log; destroying a gate waits for the threads before it,
/// which only the parent has. The memory is given up instead.
void Store::leaveToParent() noexcept {
    static_cast<void>(gate_.release());
    for (std::unique_ptr<Connection>& connection : idle_) {
        static_cast<void>(connection.release());
    }
}

void Store::requireOwnProcess() const {
    if (process_.isLeft()) {
        fail(ErrorCode::NotSupported, "The store was opened before this process was forked");
    }
}

void Store::prepareToWrite(Connection& connection) const {
    if (!options_.isReadOnly) {
        setJournal(connection, options_.durability);
        connection.execute(durabilityPragma(options_.durability));
    }
}

// Full durability for one change brings those before it to the disk as well. Where no byte of a row becomes
// another, SQLite writes nothing; the header of the file it always writes.
void Store::sync() {
    requireOwnProcess();
    if (options_.isReadOnly || options_.durability == SqliteDurability::Full) {
        return;
    }
    inTurn([this](Connection& connection) {
        const FullDurability durability(connection);
        change(connection, markVersion);
    });
}

// SQLite makes the copy in a temporary file, and then brings it in by one transaction. In memory, as other
// temporary things are, a large store would have no room.
void Store::compact() {
    requireWritable();
    inTurn([this](Connection& connection) {
        requireInPlace();
        mendFreePages(connection);
        connection.execute("PRAGMA temp_store = FILE");
        connection.execute("VACUUM");
        requireNotGone();
        connection.execute("PRAGMA temp_store = MEMORY");
    });
}

void Store::requireWritable() const {
    if (options_.isReadOnly) {
        fail(ErrorCode::ReadOnlyStorage);
    }
}

void Store::requireInPlace() const { requireSame(identityOfFile(path_), file_); }

// A path that cannot be followed now, for want of a right or of memory, does not undo what was committed.
void Store::requireNotGone() const {
    provider::Identity found = file_;
    const int error = findFile(path_, found);
    if (error == ENOENT || error == ENOTDIR) {
        failInUse(error, kGone);
    }
    requireSame(found, file_);
}

bool Store::isInPlace() const noexcept {
    try {
        requireInPlace();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// That the store has gone must not look as if an item were not there.
std::unique_ptr<Connection> Store::connect() const {
    try {
        return connectTo(path_, options_);
    } catch (const vfs::Exception& failure) {
        if (failure.getErrorCode() != ErrorCode::NotFound) throw;
        fail(ErrorCode::IOError, kGone);
    }
}

std::unique_ptr<Connection> Store::take(Patience patience) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!idle_.empty()) {
            std::unique_ptr<Connection> connection = std::move(idle_.back());
            idle_.pop_back();
            connection->setPatience(patience);
            return connection;
        }
    }
    std::unique_ptr<Connection> connection = connect();
    connection->setPatience(patience);
    requireInPlace();  // before anything in the file is changed
    connection->execute(kTuning);
    prepareToWrite(*connection);
    Transaction transaction(*connection, Access::Read);
    if (readStoreRow(*connection).key != key_) {
        fail(ErrorCode::IOError, "Another store has taken the place of this one");
    }
    transaction.commit();
    return connection;
}

/// One that is still in a transaction is of no use, and neither is one for reading alone, as SQLite opens it
/// while the file may not be written: others would be refused with it after that, too.
bool Store::isReusable(const Connection& connection) const noexcept {
    const bool isIdle = sqlite3_get_autocommit(connection.get()) != 0;
    return isIdle && (options_.isReadOnly || sqlite3_db_readonly(connection.get(), "main") == 0);
}

void Store::giveBack(std::unique_ptr<Connection> connection) noexcept {
    if (!isReusable(*connection)) {
        return;
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    if (idle_.size() < kMaxIdle) {
        idle_.push_back(std::move(connection));  // takes no memory
    }
}

}  // namespace foundation::storage::sqlite
