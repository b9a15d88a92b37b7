#include <pkgcore/portable/storage/providers/sqlite/Lookup.hpp>

namespace foundation::storage::sqlite {

std::optional<Entry> findAndRemember(Connection& connection, const provider::Path& path) {
    std::optional<Entry> entry = Entries(connection).find(path);
    if (entry && !path.isRoot()) {
        connection.knownFolder().remember(path, entry->parent, connection.state());
    }
    return entry;
}

std::optional<Entry> lookUp(Store& store, const provider::Path& path) {
    std::optional<Entry> entry;
    const bool isFound = store.look([&](Connection& connection) {
        return lookInKnownFolder(connection, path, [&](std::int64_t folder, const std::string& name) {
            entry = Entries(connection).find(folder, name);
        });
    });
    return isFound
               ? entry
               : store.read([&path](Connection& connection) { return findAndRemember(connection, path); });
}

}  // namespace foundation::storage::sqlite
