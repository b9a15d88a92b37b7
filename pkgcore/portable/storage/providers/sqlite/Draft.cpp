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

constexpr auto kChunk = static_cast<std::int64_t>(kChunkSize);

std::size_t fullSize(std::size_t size) noexcept { return size / kChunkSize * kChunkSize; }

}  // namespace

std::int64_t Draft::size() const noexcept {
    return stored_ * kChunk + static_cast<std::int64_t>(buffer_.size());
}

bool Draft::isBase(const std::optional<Entry>& entry) const noexcept {
    return entry && base_ && entry->node == base_->node && entry->size == base_->size;
}

void Draft::continueFrom(OpenFile file) {
    const Entry& entry = file.entry();
    if (entry.node == kNoNode) {
        return;
    }
    stored_ = entry.size / kChunk;
    buffer_ = entry.size % kChunk == 0 ? std::string() : file.chunk(stored_);
    node_ = entry.node;
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

/// The first so many bytes of the buffer.
void Draft::putChunks(Connection& connection, std::int64_t node, std::size_t bytes) const {
    const std::string_view all = std::string_view(buffer_).substr(0, bytes);
    Contents contents(connection);
    std::int64_t index = stored_;
    for (std::size_t at = 0; at < all.size(); at += kChunkSize) {
        contents.putChunk(node, index++, all.substr(at, kChunkSize));
    }
}

/// After a transaction was committed.
void Draft::keep(Stored& stored) {
    node_ = stored.entry.node;
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
        stored.pin = store_->pins().pin(stored.entry.node);
    }
}

/// Claims the content, if that is not done yet, and stores what is in the buffer.
Draft::Stored Draft::trySpill(Connection& connection) const {
    Contents contents(connection);
    Stored stored;
    stored.entry.node = node_ == kNoNode ? connection.newNode() : node_;
    if (node_ == kNoNode) {
        pinNew(stored);
        contents.putOrphan({stored.entry.node, Orphan::Kind::Content, 0});
    } else if (!isClaimed_) {
        const bool isOurs = base_->size >= kChunk &&
                            isBase(Entries(connection).find(base_->parent, base_->name)) &&
                            !contents.findOrphan(node_);
        if (!isOurs) {
            return stored;
        }
        contents.putOrphan({node_, Orphan::Kind::Content, chunkCount(base_->size)});
    }
    putChunks(connection, stored.entry.node, fullSize(buffer_.size()));
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
}

/// Goes on with a content of its own that has the same bytes.
void Draft::detach() {
    Draft copy(store_);
    std::string bytes;
    for (std::int64_t i = 0; i < stored_; ++i) {
        store_->read(
            [&](Connection& connection) { Contents(connection).readChunk(node_, i, kChunkSize, bytes); });
        copy.write(bytes.data(), bytes.size());
    }
    copy.write(buffer_.data(), buffer_.size());
    std::swap(node_, copy.node_);
    std::swap(pin_, copy.pin_);
    std::swap(base_, copy.base_);
    std::swap(isClaimed_, copy.isClaimed_);
    std::swap(stored_, copy.stored_);
    std::swap(buffer_, copy.buffer_);
}

Draft::Stored Draft::tryPublish(Connection& connection, const Find& find) const {
    Entries entries(connection);
    Contents contents(connection);
    const Place place = find(entries);
    Stored stored;
    const bool isFree = isClaimed_ || node_ == kNoNode || !contents.findOrphan(node_);
    if (base_ && !(isBase(place.old) && isFree)) {
        return stored;
    }
    stored.entry = {place.folder, place.name, Kind::File, place.isWritable, timeOfNow(), size(), node_};
    if (node_ == kNoNode && size() > 0) {
        stored.entry.node = connection.newNode();
    }
    if (isLarge(stored.entry)) {
        pinNew(stored);
    }
    putChunks(connection, stored.entry.node, buffer_.size());
    entries.put(stored.entry);
    stored.leavesOrphan = place.old && place.old->node != stored.entry.node && contents.retire(*place.old);
    if (isClaimed_) {
        contents.eraseOrphan(node_);
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
    base_ = node_ == kNoNode ? std::nullopt : std::optional<Entry>(stored.entry);
    isClaimed_ = false;
    if (stored.leavesOrphan) {
        sweep(*store_);
    }
}

void Draft::discard() noexcept {
    pin_.release();
    if (isClaimed_) {
        isClaimed_ = false;
        sweep(*store_);
    }
}

}  // namespace foundation::storage::sqlite
