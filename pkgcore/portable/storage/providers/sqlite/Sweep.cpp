#include <pkgcore/portable/storage/providers/sqlite/Sweep.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Contents.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Entries.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Store.hpp>

#include <exception>
#include <limits>

namespace foundation::storage::sqlite {

namespace {

/// So many entries are erased in one transaction.
constexpr std::int64_t kErasedAtOnce = 512;

/// What was in the folder becomes orphaned in its turn. False when nothing was left.
bool eraseSomeEntries(Connection& connection, const Orphan& folder) {
    Entries entries(connection);
    Contents contents(connection);
    const std::vector<Entry> page = entries.listAfter(folder.node, {}, kErasedAtOnce);
    for (const Entry& entry : page) {
        contents.retire(entry);
        entries.erase(entry);
    }
    return !page.empty();
}

/// False when nothing is left of it.
bool eraseSome(Connection& connection, std::int64_t node) {
    Contents contents(connection);
    const std::optional<Orphan> orphan = contents.findOrphan(node);
    if (!orphan) {
        return false;
    }
    const bool isMore = orphan->kind == Orphan::Kind::Folder
                            ? eraseSomeEntries(connection, *orphan)
                            : contents.eraseLastChunks(orphan->node, orphan->first);
    if (!isMore) {
        contents.eraseOrphan(node);
    }
    return isMore;
}

/// True if it was nobody's.
bool eraseIfFree(Store& store, std::int64_t node) {
    const bool isFree = store.pins().isFree(node);
    while (isFree && store.write([node](Connection& connection) { return eraseSome(connection, node); })) {
    }
    return isFree;
}

void sweepAll(Store& store) {
    constexpr std::int64_t kAll = std::numeric_limits<std::int64_t>::max();
    std::int64_t below = kAll;
    while (true) {
        const std::optional<Orphan> orphan =
            store.read([below](Connection& connection) { return Contents(connection).lastOrphan(below); });
        if (!orphan) {
            return;
        }
        const bool isErased = eraseIfFree(store, orphan->node);
        // A folder leaves orphans with any number.
        below = isErased && orphan->kind == Orphan::Kind::Folder ? kAll : orphan->node;
    }
}

/// What cannot be erased takes space until the next time, and does nothing else.
template <typename Work>
void attempt(Work work) noexcept {
    try {
        work();
    } catch (const std::exception&) {
        // See above.
    }
}

}  // namespace

void sweep(Store& store) noexcept {
    attempt([&store] { sweepAll(store); });
}

void sweepNode(Store& store, std::int64_t node) noexcept {
    attempt([&] {
        const bool isOrphan = store.read(
            [node](Connection& connection) { return Contents(connection).findOrphan(node).has_value(); });
        if (isOrphan) {
            eraseIfFree(store, node);
        }
    });
}

}  // namespace foundation::storage::sqlite
