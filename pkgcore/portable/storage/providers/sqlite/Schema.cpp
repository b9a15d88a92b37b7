#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Connection.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Entries.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/PageSeal.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Random.hpp>

#include <sqlite3.h>

#include <iterator>
#include <limits>
#include <string>

namespace foundation::storage::sqlite {

namespace {

// As they stand in the database. Each table is read by a prefix of its key: in the order of the list.
constexpr const char* kTables[] = {
    "CREATE TABLE store(key INTEGER NOT NULL, next INTEGER NOT NULL, seal INTEGER NOT NULL)",

    "CREATE TABLE entry(parent INTEGER NOT NULL, name BLOB NOT NULL, id INTEGER NOT NULL, kind INTEGER NOT "
    "NULL, "
    "writable INTEGER NOT NULL, modified INTEGER NOT NULL, size INTEGER NOT NULL, content INTEGER NOT NULL, "
    "seal INTEGER NOT NULL, PRIMARY KEY(parent, name)) WITHOUT ROWID",

    "CREATE TABLE chunk(id INTEGER PRIMARY KEY, seal INTEGER NOT NULL, bytes BLOB NOT NULL)",

    "CREATE TABLE orphan(number INTEGER PRIMARY KEY, kind INTEGER NOT NULL, first INTEGER NOT NULL, "
    "seal INTEGER NOT NULL)",

    "CREATE INDEX guarded ON entry(id) WHERE kind = 1 AND writable = 0",

    // For people with the sqlite3 program; the library does not use it.
    "CREATE VIEW item AS WITH RECURSIVE tree(path, id, kind, writable, modified, size, content) AS "
    "(SELECT '', id, kind, writable, modified, size, content FROM entry WHERE parent = 0 UNION ALL "
    "SELECT tree.path || '/' || CAST(entry.name AS TEXT), entry.id, entry.kind, entry.writable, "
    "entry.modified, "
    "entry.size, entry.content FROM tree JOIN entry ON entry.parent = tree.id WHERE tree.kind = 1) "
    "SELECT path, id, CASE kind WHEN 1 THEN 'folder' ELSE 'file' END AS kind, writable, "
    "strftime('%Y-%m-%d %H:%M:%S', modified / 1000000, 'unixepoch') AS modified, size, content FROM tree",
};

// Texts are UTF-16 with the high byte first, as names are: so the sqlite3 program shows them with CAST(name
// AS TEXT).
constexpr const char* kEncoding = "PRAGMA encoding = 'UTF-16be'";

/// Before there is a page: room for its seal.
void reserveSeals(Connection& connection) {
    connection.execute(("PRAGMA page_size = " + std::to_string(kPageSize)).c_str());
    int reserved = kPageSealSize;
    sqlite3_file_control(connection.get(), "main", SQLITE_FCNTL_RESERVE_BYTES, &reserved);
}

std::int64_t randomKey() {
    std::int64_t key = 0;
    fillRandom(&key, sizeof key);
    return key & std::numeric_limits<std::int64_t>::max();
}

std::int64_t sealOf(const Connection& connection, std::int64_t next) {
    const std::string text = std::to_string(next);
    return connection.sealer().seal(kNone, text);
}

void makeStoreRow(Connection& connection) {
    const std::int64_t key = randomKey();
    const std::int64_t next = kRootFolder + 1;
    connection.setKey(key);
    Statement insert(connection.get(), "INSERT INTO store(key, next, seal) VALUES(?1, ?2, ?3)");
    run(insert, key, next, sealOf(connection, next));
}

std::string quoted(const char* text) {
    std::string result = "'";
    for (; *text != '\0'; ++text) {
        result += *text == '\'' ? "''" : std::string(1, *text);
    }
    return result + '\'';
}

}  // namespace

void createSchema(Connection& connection) {
    reserveSeals(connection);
    connection.execute(kEncoding);
    Transaction transaction(connection, Access::Write);
    connection.execute(("PRAGMA application_id = " + std::to_string(kApplicationId)).c_str());
    markVersion(connection);
    for (const char* const table : kTables) {
        connection.execute(table);
    }
    makeStoreRow(connection);
    Entries(connection).makeRoot();
    transaction.commit();
}

void markVersion(Connection& connection) {
    connection.execute(("PRAGMA user_version = " + std::to_string(kVersion)).c_str());
}

void checkSchema(Connection& connection) {
    std::string list;
    for (const char* const table : kTables) {
        list += (list.empty() ? "" : ",") + quoted(table);
    }
    const std::string count = "SELECT count(DISTINCT sql) FROM sqlite_schema WHERE sql IN (" + list + ')';
    if (connection.valueOf(count.c_str()) != std::to_string(std::size(kTables))) {
        failDamaged("its tables are not those of a store");
    }
}

StoreRow readStoreRow(Connection& connection) {
    Query row(connection.statement(Sql::StoreRow));
    if (!row.step()) {
        failDamaged("it does not say what it is");
    }
    const StoreRow result{row.integer(0), row.integer(1)};
    connection.setKey(result.key);
    if (row.integer(2) != sealOf(connection, result.next) || row.step()) {
        failDamaged("what it says of itself");
    }
    return result;
}

void writeNextNumber(Connection& connection, std::int64_t next) {
    run(connection.statement(Sql::SetNext), next, sealOf(connection, next));
}

}  // namespace foundation::storage::sqlite
