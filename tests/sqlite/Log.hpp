#pragma once

#include "tests/sqlite/Soundness.hpp"

#include <sqlite3.h>

namespace test {

/// Whether stores have a write-ahead log in this program, by its SQLite or by NewerSqlite.cpp.
inline bool storesHaveLog() { return sqlite3_libversion_number() >= 3'051'003; }

/// From one fault to the next one: what goes on with a log is swept more coarsely, since both are swept.
/// PKGCORE_SQLITE_STEP=1 asks for every fault.
inline unsigned faultStep() {
    const unsigned usual = storesHaveLog() ? 7 : 1;
    return amountOf("PKGCORE_SQLITE_STEP", kIsSanitized ? 5 * usual : usual);
}

}  // namespace test
