#pragma once

#include <pkgcore/platform/storage/Exceptions.hpp>

#include <string>

struct sqlite3;

namespace foundation::storage::sqlite {

/// Throws with the platform's own message for the code.
[[noreturn]] void fail(vfs::ErrorCode code);
[[noreturn]] void fail(vfs::ErrorCode code, const std::string& message);

/// What is stored contradicts itself.
[[noreturn]] void failDamaged(const char* what);

/// Throws what an error number of the system is where a store is opened or made, "not found" included; `what`
/// is what could not be done.
[[noreturn]] void failWithSystem(int error, const char* what);

/// The same in a store that is open, where "not found" would speak of what is in it.
[[noreturn]] void failInUse(int error, const char* what);

/// What a result code of SQLite is in terms of a store; `systemError` is the errno behind it, or 0.
vfs::ErrorCode storageCode(int result, int systemError) noexcept;

/// Throws what the last call on the connection, which gave `result`, has come to. std::bad_alloc for want of
/// memory.
[[noreturn]] void failWith(sqlite3* connection, int result);

/// The same of the file that could not be opened, which may be missing.
[[noreturn]] void failToOpen(sqlite3* connection, int result);

}  // namespace foundation::storage::sqlite
