#pragma once

#include "tests/support/storage/RawDatabase.hpp"

#include <sqlite3.h>
#include <xxhash.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace test {

/// The seals of a store's pages, as docs/providers/sqlite.md describes them.
class PageSeals {
public:
    static constexpr std::size_t kPageSize = 4096;
    static constexpr std::size_t kSealed = kPageSize - 8;
    static constexpr std::size_t kLink = 4;

    /// Of the page with this number, from 1 on.
    static void seal(char* page, std::uint64_t number) {
        put(XXH3_64bits_withSeed(page, kLink, number), page + kSealed - kLink, page + kSealed);
        put(XXH3_64bits_withSeed(page, kSealed, number), page + kSealed, page + kPageSize);
    }

    static bool fits(const char* page, std::uint64_t number) {
        std::array<char, kPageSize> sealed{};
        std::copy_n(page, kPageSize, sealed.begin());
        seal(sealed.data(), number);
        return std::equal(sealed.begin(), sealed.end(), page);
    }

    /// The first page of a file that does not fit, or 0. One that was never written is all zeros.
    static std::uint64_t firstBroken(const std::string& file) {
        if (file.size() % kPageSize != 0) throw std::runtime_error("half a page");
        static const std::string hole(kPageSize, '\0');
        for (std::size_t at = 0; at < file.size(); at += kPageSize) {
            const bool isHole = file.compare(at, kPageSize, hole) == 0;
            if (!isHole && !fits(file.data() + at, at / kPageSize + 1)) return at / kPageSize + 1;
        }
        return 0;
    }

    /// Seals what SQLite alone has written to a store, through SQLite's file, since the locks of the process
    /// would go with one of our own.
    static void renew(RawDatabase& database) {
        sqlite3_file& file = database.file();
        sqlite3_int64 size = 0;
        require(file.pMethods->xFileSize(&file, &size));
        std::array<char, kPageSize> page{};
        constexpr auto kStep = static_cast<sqlite3_int64>(kPageSize);
        for (sqlite3_int64 at = 0; at < size; at += kStep) {
            require(file.pMethods->xRead(&file, page.data(), kPageSize, at));
            seal(page.data(), static_cast<std::uint64_t>(at / kStep + 1));
            require(file.pMethods->xWrite(&file, page.data(), kPageSize, at));
        }
    }

private:
    /// The low bytes, the high one first.
    static void put(std::uint64_t number, const char* begin, char* end) {
        for (; end != begin; number >>= 8U) *--end = static_cast<char>(number & 0xFFU);
    }
    static void require(int result) {
        if (result != SQLITE_OK) throw std::runtime_error(sqlite3_errstr(result));
    }
};

/// Changes the rows of a store by SQLite alone, so that the pages are whole and what is in them is not.
inline void changeRows(RawDatabase& database, const std::string& sql) {
    database.run(sql);
    PageSeals::renew(database);
}

inline void changeRows(const std::string& path, const std::string& sql) {
    RawDatabase database(path);
    changeRows(database, sql);
}

}  // namespace test
