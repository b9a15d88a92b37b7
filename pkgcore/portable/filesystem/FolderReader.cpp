#include <pkgcore/portable/filesystem/FolderReader.hpp>

#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <dirent.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

namespace fl::filesystem::posix {

namespace {

// The C library lays out its dirent64 as the system does its records.
constexpr std::size_t kLengthOffset = offsetof(dirent64, d_reclen);
constexpr std::size_t kTypeOffset = offsetof(dirent64, d_type);
constexpr std::size_t kNameOffset = offsetof(dirent64, d_name);

constexpr std::size_t kBlockSize = std::size_t{32} * 1024;
constexpr std::size_t kLongestRecord = sizeof(dirent64);

constexpr int kMaxStreaming = 32;
std::atomic<int> streaming{0};

std::size_t recordLength(const char* record) noexcept {
    std::uint16_t length;
    std::memcpy(&length, record + kLengthOffset, sizeof length);
    return length;
}

bool isDots(const char* name) noexcept {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

const char* skipDots(const char* record, const char* end) noexcept {
    while (record != end && isDots(record + kNameOffset)) {
        record += recordLength(record);
    }
    return record;
}

}  // namespace

bool StreamingSlot::acquire() noexcept {
    held_ = streaming.fetch_add(1, std::memory_order_relaxed) < kMaxStreaming;
    if (!held_) {
        streaming.fetch_sub(1, std::memory_order_relaxed);
    }
    return held_;
}

void StreamingSlot::release() noexcept {
    if (std::exchange(held_, false)) {
        streaming.fetch_sub(1, std::memory_order_relaxed);
    }
}

FolderReader::FolderReader(int folder) : folder_(folder) {
    alignas(dirent64) char scratch[kBlockSize];  // left uninitialised: only what was read is looked at
    const std::size_t size = readWhatFits(scratch);
    const char* const first = skipDots(scratch, scratch + size);
    const auto left = static_cast<std::size_t>(scratch + size - first);
    keep(first, left, complete_ ? left : kBlockSize);
    if (!complete_ && !slot_.acquire()) {
        drain();
    }
}

bool FolderReader::next() {
    do {
        if (next_ == end_ && !refill()) {
            return false;
        }
        entry_ = next_;
        next_ += recordLength(entry_);
    } while (isDots(name()));
    return true;
}

const char* FolderReader::name() const noexcept { return entry_ + kNameOffset; }

std::size_t FolderReader::nameLength() const noexcept { return std::strlen(name()); }

unsigned char FolderReader::type() const noexcept { return static_cast<unsigned char>(entry_[kTypeOffset]); }

void FolderReader::drain() {
    if (complete_) {
        return;
    }
    const bool stands = entry_ != nullptr;
    std::vector<char> records(stands ? entry_ : next_, end_);
    while (!complete_) {
        const std::size_t size = records.size();
        records.resize(size + kBlockSize);
        records.resize(size + readBatch(records.data() + size, kBlockSize));
    }
    keep(records.data(), records.size(), records.size());
    if (stands) {
        entry_ = next_;
        next_ += recordLength(entry_);
    }
    slot_.release();
}

/// Reads some records; 0 when there are no more, which ends the reading, as an error does.
std::size_t FolderReader::readBatch(char* to, std::size_t room) noexcept {
    const ssize_t size = retryInterrupted([&] { return systemCalls().getdents64(folder_, to, room); });
    if (size > 0) {
        return static_cast<std::size_t>(size);
    }
    complete_ = true;
    // A folder that was removed after it was opened says ENOENT; POSIX has that be the end, as of an empty
    // folder.
    error_ = size < 0 && errno != ENOENT ? errno : 0;
    return 0;
}

/// Reads until the end or until the block might not hold a further record.
std::size_t FolderReader::readWhatFits(char* block) noexcept {
    std::size_t size = 0;
    while (!complete_ && kBlockSize - size >= kLongestRecord) {
        size += readBatch(block + size, kBlockSize - size);
    }
    return size;
}

void FolderReader::keep(const char* records, std::size_t size, std::size_t capacity) {
    std::unique_ptr<char[]> block(capacity == 0 ? nullptr : new char[capacity]);
    if (size != 0) {
        std::memcpy(block.get(), records, size);
    }
    block_ = std::move(block);
    next_ = block_.get();
    end_ = next_ + size;
}

bool FolderReader::refill() {
    if (complete_) {
        return false;
    }
    next_ = block_.get();
    end_ = next_ + readBatch(block_.get(), kBlockSize);
    if (complete_) {
        slot_.release();
    }
    return next_ != end_;
}

}  // namespace fl::filesystem::posix
