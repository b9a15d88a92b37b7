#include <pkgcore/portable/filesystem/FolderReader.hpp>

#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <dirent.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

namespace fl::filesystem::posix {

namespace {

// The C library lays out its dirent64 as the system does its records.
constexpr std::size_t kPositionOffset = offsetof(dirent64, d_off);
constexpr std::size_t kLengthOffset = offsetof(dirent64, d_reclen);
constexpr std::size_t kTypeOffset = offsetof(dirent64, d_type);
constexpr std::size_t kNameOffset = offsetof(dirent64, d_name);

constexpr std::size_t kBlockSize = std::size_t{32} * 1024;
constexpr std::size_t kUsualRecord = sizeof(dirent64);  // some file systems have longer names

std::size_t recordLength(const char* record) noexcept {
    std::uint16_t length;
    std::memcpy(&length, record + kLengthOffset, sizeof length);
    return length;
}

std::int64_t positionBehind(const char* record) noexcept {
    std::int64_t position;
    std::memcpy(&position, record + kPositionOffset, sizeof position);
    return position;
}

bool isDots(const char* name) noexcept {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

}  // namespace

FolderReader::FolderReader(int folder) : folder_(folder) { load(); }

bool FolderReader::next() {
    do {
        if (next_ == end_ && !refill()) {
            return false;
        }
        entry_ = next_;
        here_ = std::exchange(behind_, positionBehind(entry_));
        next_ += recordLength(entry_);
    } while (isDots(name()));
    return true;
}

const char* FolderReader::name() const noexcept { return entry_ + kNameOffset; }

std::size_t FolderReader::nameLength() const noexcept { return std::strlen(name()); }

unsigned char FolderReader::type() const noexcept { return static_cast<unsigned char>(entry_[kTypeOffset]); }

void FolderReader::park() {
    const std::size_t length = recordLength(entry_);
    keep(entry_, length, length);
    entry_ = block_.get();
    next_ = end_;
    parked_ = true;
}

void FolderReader::resume(int folder) {
    folder_ = folder;
    parked_ = false;
    const std::int64_t behind = behind_;
    std::unique_ptr<char[]> record = std::move(block_);
    try {
        const char* const wanted = record.get() + kNameOffset;
        astray_ = !findAt(here_, wanted) && !findAnywhere(wanted);
    } catch (const std::bad_alloc&) {
        standOn(std::move(record));
        throw;
    }
    if (astray_) {
        standOn(std::move(record));
        if (error_ == 0) {
            seek(behind);
        }
    }
}

/// Stands on the entry of a record with nothing read behind it.
void FolderReader::standOn(std::unique_ptr<char[]> record) noexcept {
    block_ = std::move(record);
    capacity_ = 0;
    entry_ = block_.get();
    next_ = nullptr;
    end_ = nullptr;
}

bool FolderReader::isNamed(const char* wanted) const noexcept { return std::strcmp(name(), wanted) == 0; }

/// A position that the file system does not know any more is no failure, but one of reading is.
bool FolderReader::findAt(std::int64_t position, const char* wanted) {
    if (seek(position)) {
        return next() && isNamed(wanted);
    }
    error_ = 0;
    return false;
}

bool FolderReader::findAnywhere(const char* wanted) {
    if (error_ != 0 || !seek(0)) {
        return false;
    }
    while (next()) {
        if (isNamed(wanted)) {
            return true;
        }
    }
    return false;
}

bool FolderReader::seek(std::int64_t position) noexcept {
    behind_ = position;
    next_ = nullptr;
    end_ = nullptr;
    const off_t reached = retryInterrupted(
        [&] { return systemCalls().lseek(folder_, static_cast<off_t>(position), SEEK_SET); });
    error_ = reached < 0 ? errno : 0;
    complete_ = reached < 0;
    return !complete_;
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
    while (!complete_ && kBlockSize - size >= kUsualRecord) {
        size += readBatch(block + size, kBlockSize - size);
    }
    if (error_ == EINVAL && size != 0) {  // the next record is longer than the room that is left
        error_ = 0;
        complete_ = false;
    }
    return size;
}

/// Reads the first block, and keeps no more memory than its records take if they are all that there are.
void FolderReader::load() {
    alignas(dirent64) char scratch[kBlockSize];  // left uninitialised: only what was read is looked at
    const std::size_t size = readWhatFits(scratch);
    const char* const end = scratch + size;
    const char* first = scratch;
    while (first != end && isDots(first + kNameOffset)) {
        behind_ = positionBehind(first);
        first += recordLength(first);
    }
    const auto left = static_cast<std::size_t>(end - first);
    try {
        keep(first, left, complete_ ? left : kBlockSize);
    } catch (const std::bad_alloc&) {
        complete_ = true;  // what was read is lost, and must not be passed over in silence
        error_ = ENOMEM;
        throw;
    }
}

void FolderReader::keep(const char* records, std::size_t size, std::size_t capacity) {
    std::unique_ptr<char[]> block(capacity == 0 ? nullptr : new char[capacity]);
    if (size != 0) {
        std::memcpy(block.get(), records, size);
    }
    block_ = std::move(block);
    capacity_ = capacity;
    next_ = block_.get();
    end_ = next_ + size;
}

bool FolderReader::refill() {
    if (complete_) {
        return false;
    }
    if (capacity_ < kBlockSize) {
        load();
    } else {
        next_ = block_.get();
        end_ = next_ + readBatch(block_.get(), kBlockSize);
    }
    return next_ != end_;
}

}  // namespace fl::filesystem::posix
