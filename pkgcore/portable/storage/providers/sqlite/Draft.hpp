#pragma once

#include <pkgcore/portable/storage/providers/sqlite/Entries.hpp>
#include <pkgcore/portable/storage/providers/sqlite/OpenFile.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Pins.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Store.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace foundation::storage::sqlite {

/// Where a content is to be published.
struct Place {
    std::int64_t folder = 0;
    std::string name;          ///< as stored
    std::optional<Entry> old;  ///< what is there, and may be replaced
    bool isWritable = true;
};

/// A content that is being written. What is more than a few megabytes goes into the store as an orphan, bound
/// to this draft by a pin; publishing makes it the content of an entry in one transaction.
///
/// A content that was published, or that an entry had before, is continued in place as long as the entry has
/// it: only chunks are added, and the last one may become longer. Nobody reads beyond the size that the entry
/// had when they opened it. Otherwise, and if somebody else is continuing it, it is copied.
class Draft {
public:
    /// Finds the place within the transaction that publishes; throws where there is none.
    using Find = std::function<Place(Entries& entries)>;

    explicit Draft(SharedStore store) : store_(std::move(store)) {}
    ~Draft() { discard(); }
    Draft(const Draft&) = delete;
    Draft& operator=(const Draft&) = delete;

    /// Goes on behind a content. To be called on an empty draft.
    void continueFrom(OpenFile file);

    /// Adds the whole of a content.
    void copyFrom(OpenFile& file);

    void write(const char* bytes, std::size_t count);

    void publish(const Find& find);

    /// Leaves nothing of what is not published.
    void discard() noexcept;

private:
    /// What a transaction has come to, once it is committed.
    struct Stored {
        bool isDone = false;  ///< otherwise the content must be copied first
        Entry entry;
        Pin pin;  ///< empty if the draft has one already
        bool leavesOrphan = false;
        std::int64_t lastSeal = 0;  ///< of the last chunk that was put
    };

    std::int64_t size() const noexcept;
    bool isBase(const std::optional<Entry>& entry) const noexcept;
    void pinNew(Stored& stored) const;
    void spill();
    Stored trySpill(Connection& connection) const;
    Stored tryPublish(Connection& connection, const Find& find) const;
    void requireUnswept(Connection& connection) const;
    std::int64_t putChunks(Connection& connection, std::int64_t content, std::size_t bytes) const;
    void keep(Stored& stored);
    void detach();

    SharedStore store_;
    std::int64_t content_ = 0;   ///< its number; 0 before anything of it is stored
    Pin pin_;                    ///< where it is large
    std::optional<Entry> base_;  ///< the published state that is continued
    bool isClaimed_ = false;     ///< the orphan of this number is ours
    std::int64_t stored_ = 0;    ///< so many chunks are stored and full
    std::int64_t lastSeal_ = 0;  ///< of the last one of them, once the content is claimed
    std::string buffer_;         ///< what comes behind them
};

}  // namespace foundation::storage::sqlite
