#pragma once

#include "bench/sqlite/BareStatement.hpp"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace bench {

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};

/// A connection as those of the provider are with normal durability.
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
Database openDatabase(const std::filesystem::path& file);

/// As it answers to another connection.
std::string journalOf(const Database& database);

/// The database of a store, with the statements that its operations cannot do without: the limit of the
/// provider. What is written has no seals, so that the provider would take it for damage.
class BareStore {
public:
    /// Of a store that the provider has made; with this journal mode from now on.
    BareStore(const std::filesystem::path& file, const std::string& journal);

    /// The number of a folder in the root, by its name as stored.
    std::int64_t folder(std::string_view name);

    /// A file in one row, by one statement.
    void readFile(std::int64_t folder, std::string_view name, char* out, std::size_t size);

    /// A file in one row, by one transaction.
    void addFile(std::int64_t folder, std::string_view name, std::string_view bytes);

    /// A file in many rows, in one pass.
    void readLargeFile(std::int64_t folder, std::string_view name, char* chunk, std::size_t size);

    /// A file in many rows, of which a transaction writes as many as one of the provider.
    void addLargeFile(std::int64_t folder, std::string_view name, std::string_view chunk, std::size_t size);

    void rename(std::int64_t folder, std::string_view from, std::string_view to);

private:
    void addEntry(std::int64_t folder, std::string_view name, std::size_t size, std::int64_t content);

    Database database_;
    BareStatement begin_;
    BareStatement commit_;
    BareStatement find_;
    BareStatement read_;
    BareStatement readAll_;
    BareStatement addChunk_;
    BareStatement addEntry_;
    BareStatement addOrphan_;
    BareStatement dropOrphan_;
    BareStatement rename_;
    std::int64_t next_ = std::int64_t{1} << 20;  // above what the store has given
};

/// A name as a store keeps it.
std::string storedName(const std::u16string& name);

}  // namespace bench
