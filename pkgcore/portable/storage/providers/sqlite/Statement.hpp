#pragma once

#include <cstdint>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace foundation::storage::sqlite {

/// A prepared statement. Values that are bound as text or bytes must stay in place until it is reset.
class Statement {
public:
    /// The text must end with a NUL. It is prepared to be used many times.
    Statement(sqlite3* connection, const char* sql);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void bind(int parameter, std::int64_t value);
    void bind(int parameter, std::string_view bytes);

    /// Moves to the next row; false behind the last one.
    bool step();

    /// Numbered from 0. Valid until the next step or reset.
    std::int64_t integer(int column) const noexcept;
    std::string_view bytes(int column) const;

    /// Ready to be bound and stepped again; gives back what the row holds of the store.
    void reset() noexcept;

private:
    sqlite3* connection_;
    sqlite3_stmt* statement_ = nullptr;
};

/// One use of a statement, which is reset at its end.
class Query {
public:
    template <typename... Values>
    explicit Query(Statement& statement, const Values&... values) : statement_(statement) {
        int parameter = 0;
        (statement_.bind(++parameter, values), ...);
    }
    ~Query() { statement_.reset(); }
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    bool step() { return statement_.step(); }
    std::int64_t integer(int column) const noexcept { return statement_.integer(column); }
    std::string_view bytes(int column) const { return statement_.bytes(column); }

private:
    Statement& statement_;
};

/// Runs a statement that gives no rows.
template <typename... Values>
void run(Statement& statement, const Values&... values) {
    Query(statement, values...).step();
}

}  // namespace foundation::storage::sqlite
