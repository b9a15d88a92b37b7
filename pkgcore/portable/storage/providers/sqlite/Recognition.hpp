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

/// The folder in which a path with a slash lies, with the slash.
std::string folderOf(const std::string& path);

/// Throws unless the file or the folder may be written.
void requireWritable(const std::string& path);

/// Throws unless the file of a store may be written, and a journal be made beside it.
void requireWritableStore(const std::string& path);

}  // namespace foundation::storage::sqlite
