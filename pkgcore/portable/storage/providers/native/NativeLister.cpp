#include <pkgcore/portable/storage/providers/native/NativeLister.hpp>

#include <pkgcore/platform/filesystem/FileStatus.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/FolderReader.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>
#include <pkgcore/portable/filesystem/ItemKind.hpp>
#include <pkgcore/portable/filesystem/PathText.hpp>
#include <pkgcore/portable/storage/providers/native/NativeErrors.hpp>

#include <dirent.h>

#include <algorithm>
#include <iterator>

namespace foundation::storage::portable {

namespace posix = fl::filesystem::posix;

using fl::filesystem::file_status;
using provider::Kind;
using provider::ListItem;

namespace {

/// Some file systems do not keep the kind with the name; then it takes a call for each.
unsigned kindOf(int folder, const posix::FolderReader& entry) {
    if (entry.type() != DT_UNKNOWN) {
        return posix::kindOfType(entry.type());
    }
    struct stat status;
    const int error = posix::readStatus(posix::Item{folder, entry.name()}, status);
    return error == 0 ? posix::kindOfMode(status.st_mode) : file_status::unknown_file;
}

/// What is unknown counts as a file: whoever opens it will see.
bool isDevice(unsigned kind) noexcept {
    return kind != file_status::regular_file && kind != file_status::directory_file &&
           kind != file_status::symlink_file && kind != file_status::unknown_file;
}

}  // namespace

struct NativeLister::Found {
    std::u16string name;
    unsigned kind;

    friend bool operator<(const Found& one, const Found& other) noexcept { return one.name < other.name; }
};

NativeLister::NativeLister(Open open, LeadsToFolder leadsToFolder, std::size_t pageSize)
    : open_(std::move(open)), leadsToFolder_(std::move(leadsToFolder)), pageSize_(pageSize) {}

/// Up to a page of them, in order.
std::vector<NativeLister::Found> NativeLister::smallestBehind() const {
    std::vector<Found> smallest;
    const auto keepPage = [&] {
        if (smallest.size() > pageSize_) {
            const auto end = smallest.begin() + static_cast<std::ptrdiff_t>(pageSize_);
            std::nth_element(smallest.begin(), end, smallest.end());
            smallest.erase(end, smallest.end());
        }
    };
    const posix::FileDescriptor folder = open_();
    posix::FolderReader entries(folder.get());
    while (entries.next()) {
        std::u16string name;
        posix::appendDecoded({entries.name(), entries.nameLength()}, name);
        if (name > last_) {
            smallest.push_back(Found{std::move(name), kindOf(folder.get(), entries)});
        }
        if (smallest.size() == 2 * pageSize_) {
            keepPage();
        }
    }
    if (entries.error() != 0) {
        posix::throwError(entries.error(), std::u16string());
    }
    keepPage();
    std::sort(smallest.begin(), smallest.end());
    return smallest;
}

ListItem NativeLister::itemFor(Found found) const {
    const bool isLink = found.kind == file_status::symlink_file;
    const bool isFolder = found.kind == file_status::directory_file || (isLink && leadsToFolder_(found.name));
    return ListItem{std::move(found.name), isFolder ? Kind::Folder : Kind::File, isLink,
                    isDevice(found.kind)};
}

std::vector<ListItem> NativeLister::next() {
    std::vector<ListItem> page;
    if (isDone_) {
        return page;
    }
    asStorage(Purpose::Reading, [&] {
        std::vector<Found> found = smallestBehind();
        isDone_ = found.size() < pageSize_;
        page.reserve(found.size());
        std::transform(std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()),
                       std::back_inserter(page), [this](Found&& entry) { return itemFor(std::move(entry)); });
    });
    if (!page.empty()) {
        last_ = page.back().name;
    }
    return page;
}

}  // namespace foundation::storage::portable
