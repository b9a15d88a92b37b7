#include <pkgcore/portable/storage/providers/sqlite/Statement.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>

#include <sqlite3.h>

#include <new>

namespace foundation::storage::sqlite {

Statement::Statement(sqlite3* connection, const char* sql) : connection_(connection) {
    const int result =
        sqlite3_prepare_v3(connection, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement_, nullptr);
    if (result != SQLITE_OK) {
        failWith(connection, result);
    }
}

Statement::~Statement() { sqlite3_finalize(statement_); }

void Statement::bind(int parameter, std::int64_t value) {
    const int result = sqlite3_bind_int64(statement_, parameter, value);
    if (result != SQLITE_OK) {
        failWith(connection_, result);
    }
}

void Statement::bind(int parameter, std::string_view bytes) {
    // A null pointer would be NULL and no empty value.
    const char* const data = bytes.empty() ? "" : bytes.data();
    const int result = sqlite3_bind_blob64(statement_, parameter, data, bytes.size(), SQLITE_STATIC);
    if (result != SQLITE_OK) {
        failWith(connection_, result);
    }
}

bool Statement::step() {
    const int result = sqlite3_step(statement_);
    if (result == SQLITE_ROW) {
        return true;
    }
    if (result != SQLITE_DONE) {
        failWith(connection_, result);
    }
    return false;
}

std::int64_t Statement::integer(int column) const noexcept {
    return sqlite3_column_int64(statement_, column);
}

std::string_view Statement::bytes(int column) const {
    const void* const data = sqlite3_column_blob(statement_, column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
    const bool isLacking = data == nullptr && sqlite3_column_type(statement_, column) != SQLITE_NULL &&
                           sqlite3_errcode(connection_) == SQLITE_NOMEM;
    if (isLacking) {
        throw std::bad_alloc();
    }
    return {static_cast<const char*>(data), size};
}

void Statement::reset() noexcept { sqlite3_reset(statement_); }

}  // namespace foundation::storage::sqlite
