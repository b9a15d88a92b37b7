#pragma once

#include <pkgcore/portable/storage/providers/sqlite/Entries.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Pins.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Store.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace foundation::storage::sqlite {

/// The content that a file had when it was opened; it stays readable whatever happens to the file.
class OpenFile {
public:
    /// "Not found" for a folder and for nothing.
    OpenFile(SharedStore store, const provider::Path& path);
    OpenFile(OpenFile&& other) noexcept = default;
    OpenFile& operator=(OpenFile&&) = delete;

    /// Erases the content if it was kept for this file alone.
    ~OpenFile();

    /// The file at a path; none for a folder and for nothing.
    static std::optional<OpenFile> ifThere(const SharedStore& store, const provider::Path& path);

    /// Of an entry that was listed, with the content that it has now; none if no file has its name any more.
    static std::optional<OpenFile> ofEntry(const SharedStore& store, const Entry& entry);

    const Entry& entry() const noexcept { return entry_; }
    std::uint64_t size() const noexcept { return static_cast<std::uint64_t>(entry_.size); }

    /// As Reader::readAt().
    std::size_t readAt(std::uint64_t offset, char* out, std::size_t count);

    /// A chunk, whole; valid until the next call.
    const std::string& chunk(std::int64_t index);

    /// Keeps the content in the store.
    Pin takePin() noexcept { return std::move(pin_); }

private:
    explicit OpenFile(SharedStore store) : store_(std::move(store)) {}

    template <typename Find>
    static std::optional<OpenFile> openIfThere(const SharedStore& store, Find find);
    template <typename Find>
    bool open(Find find);
    bool openAtOnce(const provider::Path& path);

    void letGo() noexcept;
    std::size_t readFull(std::int64_t index, char* out, std::size_t count);
    std::size_t readPart(std::int64_t index, std::size_t start, char* out, std::size_t count);

    SharedStore store_;
    Entry entry_;
    Pin pin_;
    std::int64_t index_ = -1;  ///< of the chunk that is in memory
    std::string bytes_;
};

}  // namespace foundation::storage::sqlite
