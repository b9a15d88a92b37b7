#pragma once

#include <pkgcore/portable/storage/ProviderParts.hpp>

#include <map>
#include <mutex>

namespace example {

using namespace foundation::storage::provider;
using foundation::storage::vfs::ErrorCode;

/// Notes in memory, all of them in one folder.
class NoteStore : public Provider, public std::enable_shared_from_this<NoteStore> {
    std::mutex mutex_;
    std::map<std::u16string, std::string> notes_;

public:
    Traits traits() const override {
        Traits traits;
        traits.readsAt = traits.writes = traits.removes = true;
        return traits;
    }
    std::optional<Item> find(const Path& path) override {
        const std::lock_guard lock(mutex_);
        const bool isThere = path.isRoot() || notes_.count(path.text()) == 1;
        return isThere ? std::optional<Item>({path.isRoot() ? Kind::Folder : Kind::File}) : std::nullopt;
    }
    std::unique_ptr<Lister> list(const Path& folder) override {
        const std::lock_guard lock(mutex_);
        require(folder.isRoot(), ErrorCode::NotFound);
        std::vector<ListItem> entries;
        for (const auto& note : notes_) entries.push_back({note.first});
        return std::make_unique<EntriesLister>(std::move(entries));
    }
    std::unique_ptr<Reader> openReader(const Path& file) override {
        const std::lock_guard lock(mutex_);
        require(notes_.count(file.text()) == 1, ErrorCode::NotFound);
        return std::make_unique<BytesReader>(notes_[file.text()]);
    }
    std::unique_ptr<Writer> openWriter(const Path& file, WriteMode mode) override {
        require(file.parent().isRoot(), find(file.parent()) ? ErrorCode::AlreadyExists : ErrorCode::NotFound);
        require(mode != WriteMode::Append, ErrorCode::NotSupported);
        const auto publish = [self = shared_from_this(), file](const std::string& bytes, bool mustBeNew) {
            const std::lock_guard lock(self->mutex_);
            require(!mustBeNew || self->notes_.count(file.text()) == 0, ErrorCode::AlreadyExists);
            self->notes_[file.text()] = bytes;
        };
        return std::make_unique<BytesWriter>(mode, publish);
    }
    void remove(const Path& file) override {
        const std::lock_guard lock(mutex_);
        require(notes_.erase(file.text()) == 1, ErrorCode::NotFound);
    }
};

}  // namespace example
