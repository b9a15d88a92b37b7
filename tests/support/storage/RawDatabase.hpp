#pragma once

#include <sqlite3.h>

#include <stdexcept>
#include <string>

namespace test {

/// A database by calls of SQLite alone, so that it can judge the library.
class RawDatabase {
public:
    explicit RawDatabase(const std::string& path) {
        if (sqlite3_open(path.c_str(), &handle_) != SQLITE_OK) {
            fail();
        }
        sqlite3_busy_timeout(handle_, 10'000);
    }
    ~RawDatabase() { sqlite3_close(handle_); }
    RawDatabase(const RawDatabase&) = delete;
    RawDatabase& operator=(const RawDatabase&) = delete;

    /// Runs statements; the last value of the last row, as a text.
    std::string run(const std::string& sql) {
        std::string value;
        const auto keep = [](void* out, int count, char** texts, char** /*names*/) {
            const char* const last = texts[count - 1];
            *static_cast<std::string*>(out) = last == nullptr ? "" : last;
            return 0;
        };
        if (sqlite3_exec(handle_, sql.c_str(), keep, &value, nullptr) != SQLITE_OK) {
            fail();
        }
        return value;
    }

    int count(const std::string& table) { return std::stoi(run("SELECT count(*) FROM " + table)); }

    /// Valid as long as this is.
    sqlite3_file& file() {
        sqlite3_file* file = nullptr;
        sqlite3_file_control(handle_, "main", SQLITE_FCNTL_FILE_POINTER, &file);
        if (file == nullptr || file->pMethods == nullptr) {
            throw std::runtime_error("the database has no file");
        }
        return *file;
    }

private:
    [[noreturn]] void fail() { throw std::runtime_error(sqlite3_errmsg(handle_)); }

    sqlite3* handle_ = nullptr;
};

}  // namespace test
