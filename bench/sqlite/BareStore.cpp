#include "bench/sqlite/BareStore.hpp"

#include <cstring>

namespace bench {

namespace {

constexpr int kChunkBits = 28;
constexpr std::size_t kChunksAtOnce = 64;

constexpr std::int64_t firstChunk(std::int64_t content) { return content << kChunkBits; }

}  // namespace

Database openDatabase(const std::filesystem::path& file) {
    sqlite3* database = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    require(sqlite3_open_v2(file.c_str(), &database, flags, nullptr) == SQLITE_OK, "no database");
    Database result(database);
    require(sqlite3_exec(database,
                         "PRAGMA secure_delete = OFF; PRAGMA cache_size = -1024; PRAGMA cache_spill = 2000;"
                         "PRAGMA cell_size_check = ON; PRAGMA mmap_size = 0; PRAGMA temp_store = MEMORY",
                         nullptr, nullptr, nullptr) == SQLITE_OK,
            "a pragma fails");
    return result;
}

std::string journalOf(const Database& database) {
    BareStatement mode(database.get(), "PRAGMA journal_mode");
    require(mode.step(), "no journal mode");
    return mode.text(0);
}

BareStore::BareStore(const std::filesystem::path& file, const std::string& journal)
    : database_(openDatabase(file)),
      begin_(database_.get(), "BEGIN IMMEDIATE"),
      commit_(database_.get(), "COMMIT"),
      find_(database_.get(), "SELECT id FROM entry WHERE parent = ?1 AND name = ?2"),
      read_(database_.get(),
            "SELECT bytes FROM entry JOIN chunk ON chunk.id = entry.content << 28 "
            "WHERE parent = ?1 AND name = ?2"),
      readAll_(database_.get(),
               "SELECT bytes FROM entry JOIN chunk ON chunk.id >= entry.content << 28 AND "
               "chunk.id < (entry.content + 1) << 28 WHERE parent = ?1 AND name = ?2 ORDER BY chunk.id"),
      addChunk_(database_.get(), "INSERT INTO chunk(id, seal, bytes) VALUES(?1, 0, ?2)"),
      addEntry_(database_.get(),
                "INSERT INTO entry(parent, name, kind, writable, modified, size, content, seal, id) "
                "VALUES(?1, ?2, 0, 1, 1800000000000000, ?3, ?4, 4611686018427387904, ?5)"),
      addOrphan_(database_.get(), "INSERT INTO orphan(number, kind, first, seal) VALUES(?1, 0, 0, 0)"),
      dropOrphan_(database_.get(), "DELETE FROM orphan WHERE number = ?1"),
      rename_(database_.get(), "UPDATE entry SET name = ?3 WHERE parent = ?1 AND name = ?2") {
    BareStatement mode(database_.get(), ("PRAGMA journal_mode = " + journal).c_str());
    require(mode.step() && mode.text(0) == journal, "no such journal mode");
    // As the store has it for normal durability.
    const char* const level = journal == "wal" ? "PRAGMA synchronous = NORMAL" : "PRAGMA synchronous = FULL";
    require(sqlite3_exec(database_.get(), level, nullptr, nullptr, nullptr) == SQLITE_OK, "no such level");
}

std::int64_t BareStore::folder(std::string_view name) {
    constexpr std::int64_t kRoot = 1;
    find_.start(kRoot, name);
    require(find_.step(), "no such folder");
    const std::int64_t result = find_.integer(0);
    find_.finish();
    return result;
}

void BareStore::readFile(std::int64_t folder, std::string_view name, char* out, std::size_t size) {
    read_.start(folder, name);
    require(read_.step() && read_.bytes(0).size() == size, "no such file");
    std::memcpy(out, read_.bytes(0).data(), size);
    read_.finish();
}

void BareStore::addEntry(std::int64_t folder, std::string_view name, std::size_t size, std::int64_t content) {
    addEntry_.run(folder, name, static_cast<std::int64_t>(size), content, next_++);
}

void BareStore::addFile(std::int64_t folder, std::string_view name, std::string_view bytes) {
    const std::int64_t content = next_++;
    begin_.run();
    addChunk_.run(firstChunk(content), bytes);
    addEntry(folder, name, bytes.size(), content);
    commit_.run();
}

void BareStore::readLargeFile(std::int64_t folder, std::string_view name, char* chunk, std::size_t size) {
    std::size_t total = 0;
    readAll_.start(folder, name);
    while (readAll_.step()) {
        const std::string_view bytes = readAll_.bytes(0);
        std::memcpy(chunk, bytes.data(), bytes.size());
        total += bytes.size();
    }
    readAll_.finish();
    require(total == size, "the file has another size");
}

void BareStore::addLargeFile(std::int64_t folder, std::string_view name, std::string_view chunk,
                             std::size_t size) {
    const std::int64_t content = next_++;
    const std::size_t count = size / chunk.size();
    begin_.run();
    addOrphan_.run(content);
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0 && i % kChunksAtOnce == 0) {
            commit_.run();
            begin_.run();
        }
        addChunk_.run(firstChunk(content) + static_cast<std::int64_t>(i), chunk);
    }
    commit_.run();
    begin_.run();
    addEntry(folder, name, size, content);
    dropOrphan_.run(content);
    commit_.run();
}

void BareStore::rename(std::int64_t folder, std::string_view from, std::string_view to) {
    rename_.run(folder, from, to);
}

std::string storedName(const std::u16string& name) {
    std::string bytes;
    for (const char16_t unit : name) {
        bytes += static_cast<char>(unit >> 8U);
        bytes += static_cast<char>(unit & 0xFFU);
    }
    return bytes;
}

}  // namespace bench
