#pragma once

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// @file
/// Readers, writers and listers for stores whose files and folders are small enough to be held in memory one
/// at a time. A store of one's own may then consist of its verbs alone; examples/own_store is one.
namespace foundation::storage::provider {

/// Throws a failure with the text that the code has, unless `holds`.
inline void require(bool holds, vfs::ErrorCode code) {
    if (!holds) {
        throw vfs::Exception(code, vfs::AbsoluteIRI());
    }
}

/// Reads bytes that it holds, for a store with Traits::readsAt.
class BytesReader : public Reader {
public:
    /// Begins at the first of `bytes`.
    explicit BytesReader(std::string bytes) : bytes_(std::move(bytes)) {}

    std::size_t read(char* out, std::size_t count) override {
        const std::size_t taken = readAt(next_, out, count);
        next_ += taken;
        return taken;
    }
    std::size_t readAt(std::uint64_t offset, char* out, std::size_t count) override {
        return offset < bytes_.size() ? bytes_.copy(out, count, static_cast<std::size_t>(offset)) : 0;
    }
    std::optional<std::uint64_t> size() const override { return bytes_.size(); }

private:
    std::string bytes_;
    std::size_t next_ = 0;
};

/// Collects a content and hands all of it over at each commit.
class BytesWriter : public Writer {
public:
    /// Stores the bytes in one step. `mustBeNew` says that anything there is "exists": at the first commit of
    /// WriteMode::CreateNew. What it throws, the commit throws.
    using Publish = std::function<void(const std::string& bytes, bool mustBeNew)>;

    /// Begins with an empty content. Not for WriteMode::Append.
    BytesWriter(WriteMode mode, Publish publish)
        : publish_(std::move(publish)), mustBeNew_(mode == WriteMode::CreateNew) {}

    void write(const char* bytes, std::size_t count) override { bytes_.append(bytes, count); }
    void commit() override {
        publish_(bytes_, mustBeNew_);
        mustBeNew_ = false;
    }
    void discard() noexcept override { bytes_.clear(); }

private:
    Publish publish_;
    std::string bytes_;
    bool mustBeNew_;
};

/// Shows entries that it holds, all of them as one page.
class EntriesLister : public Lister {
public:
    /// In any order, each entry once.
    explicit EntriesLister(std::vector<ListItem> entries) : entries_(std::move(entries)) {
        std::sort(entries_.begin(), entries_.end(),
                  [](const ListItem& one, const ListItem& other) { return one.name < other.name; });
    }

    std::vector<ListItem> next() override { return std::exchange(entries_, {}); }

private:
    std::vector<ListItem> entries_;
};

}  // namespace foundation::storage::provider
