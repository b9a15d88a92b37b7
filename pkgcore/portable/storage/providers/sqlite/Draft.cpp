#include <pkgcore/portable/storage/providers/sqlite/Draft.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Contents.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Sweep.hpp>

#include <algorithm>
#include <string_view>
#include <utility>

namespace foundation::storage::sqlite {

using provider::Kind;
using vfs::ErrorCode;

namespace {

/// So much is kept in memory before it goes into the store: a transaction may cost a wait for the disk.
constexpr std::size_t kSpillSize = 64 * kChunkSize;

std::size_t fullSize(std::size_t size) noexcept { return size / kChunkSize * kChunkSize; }

}  // namespace

std::int64_t Draft::size() const noexcept {
    return stored_ * kChunk + static_cast<std::int64_t>(buffer_.size());
}

bool Draft::isBase(const std::optional<Entry>& entry) const noexcept {
    return entry && base_ && entry->content == base_->content && entry->size == base_->size;
}

void Draft::continueFrom(OpenFile file) {
    const Entry& entry = file.entry();
    if (entry.content == kNoContent) {
        return;
    }
    stored_ = entry.size / kChunk;
    buffer_ = entry.size % kChunk == 0 ? std::string() : file.chunk(stored_);
    content_ = entry.content;
    base_ = entry;
    pin_ = file.takePin();
}

void Draft::copyFrom(OpenFile& file) {
    for (std::int64_t i = 0; i < chunkCount(file.entry().size); ++i) {
        const std::string& bytes = file.chunk(i);
        write(bytes.data(), bytes.size());
    }
}

void Draft::write(const char* bytes, std::size_t count) {
    if (count > kMaxFileSize - static_cast<std::uint64_t>(size())) {
        fail(ErrorCode::FileTooLarge);
    }
    while (count > 0) {
        const std::size_t taken = std::min(count, kSpillSize - buffer_.size());
        buffer_.append(bytes, taken);
        bytes += taken;
        count -= taken;
        if (buffer_.size() == kSpillSize) spill();
    }
}

/// What is claimed has a pin; but not everybody may see it. Sweeping begins with the last chunk, and the same
/// orphan may be that of somebody else by now, who continues the same content.
void Draft::requireUnswept(Connection& connection) const {
    Contents contents(connection);
    if (isClaimed_ &&
        !(contents.findOrphan(content_) && contents.hasChunk(content_, stored_ - 1, lastSeal_))) {
        failSwept();
    }
}

/// The first so many bytes of the buffer; returns the seal of the last chunk.
std::int64_t Draft::putChunks(Connection& connection, std::int64_t content, std::size_t bytes) const {
    const std::string_view all = std::string_view(buffer_).substr(0, bytes);
    Contents contents(connection);
    std::int64_t index = stored_;
    std::int64_t seal = 0;
    for (std::size_t at = 0; at < all.size(); at += kChunkSize) {
        seal = contents.putChunk(content, index++, all.substr(at, kChunkSize));
    }
    return seal;
}

/// After a transaction was committed.
void Draft::keep(Stored& stored) {
    content_ = stored.entry.content;
    if (stored.pin.isHeld()) {
        pin_ = std::move(stored.pin);
    }
    const std::size_t done = fullSize(buffer_.size());
    stored_ += static_cast<std::int64_t>(done / kChunkSize);
    buffer_.erase(0, done);
}

/// Before the transaction is committed, so that the content is never free in between.
void Draft::pinNew(Stored& stored) const {
    if (!pin_.isHeld()) {
        stored.pin = store_->pins().pin(stored.entry.content);
    }
}

/// Claims the content, if that is not done yet, and stores what is in the buffer.
Draft::Stored Draft::trySpill(Connection& connection) const {
    requireUnswept(connection);
    Contents contents(connection);
    Stored stored;
    stored.entry.content = content_ == kNoContent ? connection.newNumber() : content_;
    if (content_ == kNoContent) {
        pinNew(stored);
        contents.putOrphan({stored.entry.content, Orphan::Kind::Content, 0});
    } else if (!isClaimed_) {
        const bool isOurs = base_->size >= kChunk &&
                            isBase(Entries(connection).find(base_->parent, base_->name)) &&
                            !contents.findOrphan(content_);
        if (!isOurs) {
            return stored;
        }
        contents.putOrphan({content_, Orphan::Kind::Content, chunkCount(base_->size)});
    }
    stored.lastSeal = putChunks(connection, stored.entry.content, fullSize(buffer_.size()));
    stored.isDone = true;
    return stored;
}

void Draft::spill() {
    Stored stored = store_->write([this](Connection& connection) { return trySpill(connection); });
    if (!stored.isDone) {
        detach();
        return;
    }
    keep(stored);
    isClaimed_ = true;
    lastSeal_ = stored.lastSeal;
}

/// Goes on with a content of its own that has the same bytes.
void Draft::detach() {
    Draft copy(store_);
    std::string bytes;
    for (std::int64_t i = 0; i < stored_; ++i) {
        store_->read(
            [&](Connection& connection) { Contents(connection).readChunk(content_, i, kChunkSize, bytes); });
        copy.write(bytes.data(), bytes.size());
    }
    copy.write(buffer_.data(), buffer_.size());
    std::swap(content_, copy.content_);
    std::swap(pin_, copy.pin_);
    std::swap(base_, copy.base_);
    std::swap(isClaimed_, copy.isClaimed_);
    std::swap(stored_, copy.stored_);
    std::swap(lastSeal_, copy.lastSeal_);
    std::swap(buffer_, copy.buffer_);
}

Draft::Stored Draft::tryPublish(Connection& connection, const Find& find) const {
    requireUnswept(connection);
    Entries entries(connection);
    Contents contents(connection);
    const Place place = find(entries);
    Stored stored;
    const bool isFree = isClaimed_ || content_ == kNoContent || !contents.findOrphan(content_);
    if (base_ && !(isBase(place.old) && isFree)) {
        return stored;
    }
    stored.entry = {place.folder, place.name,       place.old ? place.old->id : connection.newNumber(),
                    Kind::File,   place.isWritable, timeOfNow(),
                    size(),       content_};
    if (content_ == kNoContent && size() > 0) {
        stored.entry.content = connection.newNumber();
    }
    if (isLarge(stored.entry)) {
        pinNew(stored);
    }
    putChunks(connection, stored.entry.content, buffer_.size());
    entries.put(stored.entry);
    stored.leavesOrphan =
        place.old && place.old->content != stored.entry.content && contents.retire(*place.old);
    if (isClaimed_) {
        contents.eraseOrphan(content_);
    }
    stored.isDone = true;
    return stored;
}

void Draft::publish(const Find& find) {
    const auto attempt = [&] {
        return store_->write([&](Connection& connection) { return tryPublish(connection, find); });
    };
    Stored stored = attempt();
    if (!stored.isDone) {
        detach();
        stored = attempt();
    }
    keep(stored);
    base_ = content_ == kNoContent ? std::nullopt : std::optional<Entry>(stored.entry);
    isClaimed_ = false;
    if (stored.leavesOrphan) {
        sweep(*store_);
    }
}

// Claimed or not, the content may have become an orphan that was kept for this draft.
void Draft::discard() noexcept {
    isClaimed_ = false;
    if (pin_.isHeld()) {
        pin_.release();
        sweepContent(*store_, content_);
    }
}

}  // namespace foundation::storage::sqlite
