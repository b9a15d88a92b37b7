#pragma once

#include <pkgcore/portable/storage/providers/sqlite/Connection.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Entries.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Names.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Store.hpp>

#include <optional>

namespace foundation::storage::sqlite {

/// What is at a path, within a transaction that only reads; the folder around it is known after that.
std::optional<Entry> findAndRemember(Connection& connection, const provider::Path& path);

/// Calls look(folder, name) if the folder around what is looked for is known, for one statement outside any
/// transaction. False if that has led to nothing that may be believed.
template <typename Look>
bool lookInKnownFolder(Connection& connection, const provider::Path& path, Look look) {
    const std::optional<KnownFolder::Known> folder = connection.knownFolder().around(path);
    const auto isTrue = [&] { return !folder->state || *folder->state == connection.state(); };
    if (!folder || !isTrue()) {
        return false;
    }
    look(folder->number, encodeName(path.name()));
    // What others have changed the connection knows by its statement.
    return isTrue();
}

/// What is at a path.
std::optional<Entry> lookUp(Store& store, const provider::Path& path);

}  // namespace foundation::storage::sqlite
