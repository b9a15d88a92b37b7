#pragma once

#include "bench/support/WorkFolder.hpp"

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace bench {

/// A prepared statement of SQLite, with nothing around it but the check of its result.
class BareStatement {
public:
    BareStatement(sqlite3* database, const char* sql) {
        require(sqlite3_prepare_v3(database, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement_, nullptr) ==
                    SQLITE_OK,
                sqlite3_errmsg(database));
    }
    ~BareStatement() { sqlite3_finalize(statement_); }
    BareStatement(const BareStatement&) = delete;
    BareStatement& operator=(const BareStatement&) = delete;

    /// Starts anew with these values; bytes must stay in place until finish().
    template <typename... Values>
    void start(const Values&... values) {
        int parameter = 0;
        (bind(++parameter, values), ...);
    }

    /// Moves to the next row; false behind the last one.
    bool step() {
        const int result = sqlite3_step(statement_);
        require(result == SQLITE_ROW || result == SQLITE_DONE, sqlite3_errstr(result));
        return result == SQLITE_ROW;
    }

    void finish() { sqlite3_reset(statement_); }

    /// For one that gives no row.
    template <typename... Values>
    void run(const Values&... values) {
        start(values...);
        require(!step(), "a row is one too many");
        finish();
    }

    std::int64_t integer(int column) const { return sqlite3_column_int64(statement_, column); }

    std::string_view bytes(int column) const {
        const auto* const data = static_cast<const char*>(sqlite3_column_blob(statement_, column));
        return {data, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
    }

    std::string text(int column) const {
        return reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    }

private:
    void bind(int parameter, std::int64_t value) { sqlite3_bind_int64(statement_, parameter, value); }
    void bind(int parameter, std::string_view bytes) {
        sqlite3_bind_blob64(statement_, parameter, bytes.data(), bytes.size(), SQLITE_STATIC);
    }

    sqlite3_stmt* statement_ = nullptr;
};

}  // namespace bench
