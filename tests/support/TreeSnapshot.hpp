#pragma once

#include <map>
#include <string>

namespace test {

/// What stands below a folder: each relative path with a line about it. Two snapshots are equal where kinds,
/// permission bits, contents and link texts are.
///
///     "a"      "folder 0755"
///     "a/b"    "file 0644 'text'"     longer contents as their size and a hash
///     "a/c"    "link -> b"
using TreeSnapshot = std::map<std::string, std::string>;

/// Holds one descriptor per level. A folder that cannot be read is shown as such.
TreeSnapshot snapshot(const std::string& folder);

}  // namespace test
