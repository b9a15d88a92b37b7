#include <pkgcore/portable/storage/providers/local/LocalLister.hpp>

#include <pkgcore/platform/filesystem/DirectoryIterator.hpp>
#include <pkgcore/portable/storage/providers/local/LocalErrors.hpp>
#include <pkgcore/portable/storage/providers/local/LocalItems.hpp>

#include <algorithm>
#include <iterator>

namespace foundation::storage::portable {

using fl::filesystem::file_status;
using fl::filesystem::detail::upath_directory_iterator_impl;
using provider::Kind;
using provider::ListItem;

struct LocalLister::Found {
    std::u16string name;
    unsigned kind;

    friend bool operator<(const Found& one, const Found& other) noexcept { return one.name < other.name; }
};

LocalLister::LocalLister(std::u16string folder, std::size_t pageSize)
    : folder_(std::move(folder)), pageSize_(pageSize) {}

/// Up to a page of them, in order.
std::vector<LocalLister::Found> LocalLister::smallestBehind() const {
    std::vector<Found> smallest;
    const auto keepPage = [&] {
        if (smallest.size() > pageSize_) {
            const auto end = smallest.begin() + static_cast<std::ptrdiff_t>(pageSize_);
            std::nth_element(smallest.begin(), end, smallest.end());
            smallest.erase(end, smallest.end());
        }
    };
    upath_directory_iterator_impl entries(folder_, fl::filesystem::detail::initialization_mode::standard);
    for (; entries.is_open(); entries.increment()) {
        const std::u16string_view name = (*entries).filename();
        if (name > last_) {
            smallest.push_back(Found{std::u16string(name), (*entries).status().kind});
        }
        if (smallest.size() == 2 * pageSize_) {
            keepPage();
        }
    }
    keepPage();
    std::sort(smallest.begin(), smallest.end());
    return smallest;
}

// The kind of a link is that of what it leads to. One that went away meanwhile is shown as it was.
ListItem LocalLister::itemFor(const Found& found) const {
    ListItem item{found.name, found.kind == file_status::directory_file ? Kind::Folder : Kind::File, false};
    if (found.kind == file_status::symlink_file) {
        item.isLink = true;
        const std::optional<LocalStatus> status = localStatus(folder_ + u'/' + found.name);
        if (status && S_ISDIR(status->status.st_mode)) {
            item.kind = Kind::Folder;
        }
    }
    return item;
}

std::vector<ListItem> LocalLister::next() {
    std::vector<ListItem> page;
    if (isDone_) {
        return page;
    }
    asStorage(Purpose::Reading, [&] {
        const std::vector<Found> found = smallestBehind();
        isDone_ = found.size() < pageSize_;
        page.reserve(found.size());
        std::transform(found.begin(), found.end(), std::back_inserter(page),
                       [this](const Found& entry) { return itemFor(entry); });
    });
    if (!page.empty()) {
        last_ = page.back().name;
    }
    return page;
}

}  // namespace foundation::storage::portable
