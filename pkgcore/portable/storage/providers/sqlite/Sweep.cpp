#include <pkgcore/portable/storage/providers/sqlite/Sweep.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Contents.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Entries.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Store.hpp>

#include <exception>
#include <limits>
#include <set>

namespace foundation::storage::sqlite {

namespace {

/// So many entries or chunks are erased in one transaction.
constexpr std::int64_t kErasedAtOnce = 512;

constexpr std::int64_t kAboveAll = std::numeric_limits<std::int64_t>::max();

/// One transaction of sweeping.
class Round {
public:
    Round(Connection& connection, Pins& pins) noexcept
        : entries_(connection), contents_(connection), pins_(pins) {}

    /// Erases orphans, the one with the highest number first. True if there is more to do.
    bool run();

private:
    bool isErasable(std::int64_t number);
    void erase(const Orphan& orphan);
    bool eraseEntries(const Orphan& folder);

    Entries entries_;
    Contents contents_;
    Pins& pins_;
    std::int64_t left_ = kErasedAtOnce;
    /// Large contents that become orphans in this transaction: somebody may still open them before it is
    /// committed.
    std::set<std::int64_t> tooNew_;
};

bool Round::run() {
    std::int64_t below = kAboveAll;
    while (left_ > 0) {
        const std::optional<Orphan> orphan = contents_.lastOrphan(below);
        if (!orphan) {
            return !tooNew_.empty();
        }
        below = orphan->number;
        if (isErasable(orphan->number)) {
            erase(*orphan);
            // A folder leaves orphans with any number.
            below = kAboveAll;
        }
    }
    return true;
}

bool Round::isErasable(std::int64_t number) { return tooNew_.count(number) == 0 && pins_.isFree(number); }

void Round::erase(const Orphan& orphan) {
    const bool isFolder = orphan.kind == Orphan::Kind::Folder;
    const bool isDone =
        isFolder ? eraseEntries(orphan) : contents_.eraseLastChunks(orphan.number, orphan.first, left_);
    left_ = isFolder ? left_ - 1 : 0;
    if (isDone) {
        contents_.eraseOrphan(orphan.number);
    }
}

/// What was in the folder becomes orphaned in its turn. True when nothing is left.
bool Round::eraseEntries(const Orphan& folder) {
    const std::int64_t count = left_;
    for (const Entry& entry : entries_.listAfter(folder.number, {}, count)) {
        const bool leavesOrphan = contents_.retire(entry);
        if (leavesOrphan && !entry.isFolder()) tooNew_.insert(entry.content);
        entries_.erase(entry);
        --left_;
    }
    return left_ > 0;
}

bool hasErasable(Store& store) {
    std::int64_t below = kAboveAll;
    while (true) {
        const std::optional<Orphan> orphan =
            store.read([below](Connection& connection) { return Contents(connection).lastOrphan(below); });
        if (!orphan || store.pins().isFree(orphan->number)) {
            return orphan.has_value();
        }
        below = orphan->number;
    }
}

void sweepAll(Store& store) {
    bool isMore = hasErasable(store);
    while (isMore) {
        isMore =
            store.write([&store](Connection& connection) { return Round(connection, store.pins()).run(); });
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

void sweepContent(Store& store, std::int64_t number) noexcept {
    attempt([&] {
        const bool isOrphan = store.read(
            [number](Connection& connection) { return Contents(connection).findOrphan(number).has_value(); });
        if (isOrphan) {
            sweepAll(store);
        }
    });
}

void failSwept() {
    fail(vfs::ErrorCode::IOError,
         "What was being written was erased by somebody who does not see the file of locks beside the store");
}

}  // namespace foundation::storage::sqlite
