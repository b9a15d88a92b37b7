#pragma once

#include "tests/support/ScopedSystemCalls.hpp"

#include <dirent.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace test {

/// The records of some names, as getdents64 writes them.
class Records {
public:
    /// `positionBehind` is where the folder goes on after the entry.
    Records& add(const std::string& name, unsigned char type, std::int64_t positionBehind = 0) {
        constexpr std::size_t kNameOffset = offsetof(dirent64, d_name);
        const auto length = static_cast<std::uint16_t>((kNameOffset + name.size() + 1 + 7) / 8 * 8);
        const std::size_t start = bytes_.size();
        bytes_.resize(start + length);
        std::memcpy(&bytes_[start + offsetof(dirent64, d_reclen)], &length, sizeof length);
        std::memcpy(&bytes_[start + offsetof(dirent64, d_off)], &positionBehind, sizeof positionBehind);
        bytes_[start + offsetof(dirent64, d_type)] = static_cast<char>(type);
        name.copy(&bytes_[start + kNameOffset], name.size());
        return *this;
    }
    const std::string& bytes() const noexcept { return bytes_; }

private:
    std::string bytes_;
};

/// One answer of getdents64: records, or an error number.
struct Batch {
    std::string records;
    int error = 0;
};

/// Has every folder that is read give these batches and then its end, as long as it lives. As from the
/// system, an answer ends where no further record fits into it.
class ScriptedFolder {
public:
    explicit ScriptedFolder(std::vector<Batch> batches) {
        left = std::move(batches);
        calls_->getdents64 = answer;
    }
    ScopedSystemCalls& calls() noexcept { return calls_; }

    /// Whether the end, or what was scripted last, has been fetched.
    bool isRead() const noexcept { return left.empty(); }

private:
    static ssize_t answer(int, void* records, size_t room) {
        if (left.empty()) {
            return 0;
        }
        Batch& batch = left.front();
        const std::size_t size = wholeRecords(batch.records, room);
        errno = batch.error != 0 ? batch.error : EINVAL;
        const bool fails = size == 0;
        batch.records.copy(static_cast<char*>(records), size);
        batch.records.erase(0, size);
        if (batch.records.empty()) {
            left.erase(left.begin());
        }
        return fails ? -1 : static_cast<ssize_t>(size);
    }

    static std::size_t wholeRecords(const std::string& records, std::size_t room) {
        std::size_t size = 0;
        while (size < records.size()) {
            std::uint16_t length = 0;
            std::memcpy(&length, &records[size + offsetof(dirent64, d_reclen)], sizeof length);
            if (size + length > room) {
                break;
            }
            size += length;
        }
        return size;
    }

    static inline std::vector<Batch> left;
    ScopedSystemCalls calls_;
};

}  // namespace test
