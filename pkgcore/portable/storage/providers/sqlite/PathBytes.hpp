#pragma once

#include <string>

namespace foundation::storage::sqlite {

/// A native path as the host takes it: UTF-8, with the byte that each of U+DC80..U+DCFF stands for. A
/// relative one begins with "./", since SQLite gives a meaning of its own to names such as ":memory:" and
/// "file:x". NotFound for an empty path and NotSupported for one without a form in bytes.
std::string pathBytes(const std::u16string& path);

/// NotSupported unless SQLite has room for the path with all that is before a relative one, and for the
/// longer names of the files beside it.
void requireFitting(const std::string& path);

}  // namespace foundation::storage::sqlite
