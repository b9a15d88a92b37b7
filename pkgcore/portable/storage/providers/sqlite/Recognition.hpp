#pragma once

#include <string>

namespace foundation::storage::sqlite {

/// Throws unless the header of the file is that of a store which this library may use; see
/// openSqliteProvider(). Reads it through SQLite, whose locks would be lost with a descriptor of our own, and
/// changes nothing.
void requireStore(const std::string& path);

/// Throws "damaged" for a file that is shorter than its header says; for one in which SQLite has found
/// damage.
void requireWholeFile(const std::string& path);

/// What is at a path.
enum class Found : unsigned char { Nothing, File };

/// Throws for what can be no store, and if it cannot tell.
Found look(const std::string& path);

/// Throws unless the file may be written.
void requireWritableFile(const std::string& path);

}  // namespace foundation::storage::sqlite
