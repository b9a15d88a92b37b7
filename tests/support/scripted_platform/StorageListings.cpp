#include <pkgcore/platform/storage/Listing.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

#include <boost/optional.hpp>

namespace foundation::storage::vfs {

using scripted::Platform;
using scripted::showPlace;
using scripted::StoredEntry;

namespace {

class ScriptedSource : public Listing::Source {
public:
    ScriptedSource(const Folder& folder, std::vector<StoredEntry> entries)
        : folder_(folder), entries_(std::move(entries)) {}

    ~ScriptedSource() override { Platform::current().record("~Listing", showPlace(folder_)); }

    ListEntry* next() override {
        if (position_ == entries_.size()) {
            return nullptr;
        }
        const StoredEntry& entry = entries_[position_++];
        Platform::current().storage.next.next(entry.location, [] {});
        current_ = boost::none;
        current_.emplace(itemOf(entry));
        return &*current_;
    }

private:
    FileOrFolder itemOf(const StoredEntry& entry) const {
        CanonicalAbsoluteIRI location(CheckedIRI{entry.location});
        if (entry.isFolder) {
            return Folder(location, folder_.getStorageSystem());
        }
        return File(location, folder_.getStorageSystem());
    }

    Folder folder_;
    std::vector<StoredEntry> entries_;
    std::size_t position_ = 0;
    boost::optional<ListEntry> current_;
};

Listing opened(const Folder& folder, std::vector<StoredEntry> entries) {
    return Listing(std::make_unique<ScriptedSource>(folder, std::move(entries)));
}

}  // namespace

Listing Folder::listAll(const std::u16string& pattern) const {
    Platform& platform = Platform::current();
    platform.record("listAll", showPlace(*this), pattern);
    platform.storage.listAll.next(location_.toString(), [] {});
    return opened(*this, platform.storage.entries[location_.toString()]);
}

Listing Folder::listAllRecursive(const std::u16string& pattern) const {
    Platform& platform = Platform::current();
    platform.record("listAllRecursive", showPlace(*this), pattern);
    platform.storage.listAllRecursive.next(location_.toString(), [] {});
    return opened(*this, platform.storage.entriesBelow[location_.toString()]);
}

}  // namespace foundation::storage::vfs
