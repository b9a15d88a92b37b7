#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/storage/FileOrFolder.hpp>

#include <boost/variant/apply_visitor.hpp>

#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>

namespace foundation::storage::vfs {

/// What a listing shows of one file or folder.
class PKGCORE_PLATFORM_API ListEntry {
public:
    /// Made by the source of a listing.
    explicit ListEntry(FileOrFolder item) : item_(std::move(item)) {}

    /// As the listing itself tells it: nothing is asked for each entry.
    /// @{
    const FileOrFolder& getFileOrFolder() const noexcept { return item_; }
    FileOrFolder& getFileOrFolder() noexcept { return item_; }
    /// @}

    /// Of the file or folder.
    const CanonicalAbsoluteIRI& getLocation() const {
        return boost::apply_visitor(
            [](const auto& item) -> const CanonicalAbsoluteIRI& { return item.getLocation(); }, item_);
    }

private:
    FileOrFolder item_;
};

/// Entries of a folder, walked once from begin() to end(). They are fetched a page at a time, so that a
/// folder of any size needs little memory: an entry that comes or goes meanwhile may or may not be shown,
/// every other one is shown once.
class PKGCORE_PLATFORM_API Listing {
public:
    /// Where a listing takes its entries from; each platform has its own.
    class PKGCORE_PLATFORM_API Source {
    public:
        Source() = default;
        virtual ~Source() = default;
        Source(const Source&) = delete;
        Source& operator=(const Source&) = delete;

        /// The next entry, valid until the next call, whatever was done to the one before; null behind the
        /// last one. Throws as the operations of Folder do.
        virtual ListEntry* next() = 0;
    };

    /// Stands on an entry until it is moved on, which may throw; the entry may be moved from. Valid as long
    /// as the listing.
    class Iterator {
    public:
        /// What std::iterator_traits and an input iterator are made of.
        /// @{
        using iterator_category = std::input_iterator_tag;
        using value_type = ListEntry;
        using difference_type = std::ptrdiff_t;
        using pointer = ListEntry*;
        using reference = ListEntry&;

        reference operator*() const noexcept { return *entry_; }
        pointer operator->() const noexcept { return entry_; }

        Iterator& operator++() {
            entry_ = source_->next();
            return *this;
        }
        void operator++(int) { ++*this; }

        friend bool operator==(const Iterator& a, const Iterator& b) noexcept { return a.entry_ == b.entry_; }
        friend bool operator!=(const Iterator& a, const Iterator& b) noexcept { return !(a == b); }
        /// @}

    private:
        friend class Listing;
        Iterator(Source* source, ListEntry* entry) noexcept : source_(source), entry_(entry) {}

        Source* source_;
        ListEntry* entry_;
    };

    /// Takes the source over.
    explicit Listing(std::unique_ptr<Source> source) noexcept : source_(std::move(source)) {}

    /// Fetches the first entry; call it once.
    Iterator begin() { return Iterator(source_.get(), source_->next()); }
    /// Behind the last entry; asks for nothing.
    Iterator end() noexcept { return Iterator(source_.get(), nullptr); }

private:
    std::unique_ptr<Source> source_;
};

}  // namespace foundation::storage::vfs
