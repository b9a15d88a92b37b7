#include <pkgcore/portable/filesystem/OpenListing.hpp>

#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>
#include <pkgcore/portable/filesystem/NativePath.hpp>

#include <dirent.h>
#include <fcntl.h>

#include <atomic>
#include <cerrno>

namespace fl::filesystem::posix {

namespace {

constexpr int kPlaces = 32;
std::atomic<int> placesTaken{0};

/// None, with errno set, where it fails.
FileDescriptor openByPath(const std::u16string& path) {
    const Place place(path);
    if (place.error() != 0) {
        errno = place.error();
        return {};
    }
    return openAt(place.directory(), place.path(), O_RDONLY | O_DIRECTORY);
}

/// The path of the folder that holds an entry, from the entry's path.
std::u16string folderOf(const std::u16string& entryPath) {
    const std::size_t separator = entryPath.rfind(u'/');
    return entryPath.substr(0, separator == 0 ? 1 : separator);
}

}  // namespace

ListingPlace::~ListingPlace() {
    if (held_) {
        placesTaken.fetch_sub(1, std::memory_order_relaxed);
    }
}

bool ListingPlace::acquire() noexcept {
    if (!held_) {
        held_ = placesTaken.fetch_add(1, std::memory_order_relaxed) < kPlaces;
        if (!held_) {
            placesTaken.fetch_sub(1, std::memory_order_relaxed);
        }
    }
    return held_;
}

thread_local OpenListing* OpenListing::innermost = nullptr;

OpenListing::OpenListing(const std::u16string& folder, const std::u16string& entryPath)
    : entryPath_(entryPath),
      outer_(innermost),
      isBelowOuter_(outer_ != nullptr && outer_->standsOnFolder(folder)),
      folder_(openOrThrow(folder, isBelowOuter_ ? outer_ : nullptr)),
      reader_(folder_.get()) {
    if (outer_ != nullptr) {
        outer_->makeWay();
    }
    innermost = this;
}

OpenListing::~OpenListing() {
    if (isBelowOuter_) {
        outer_->reopenFrom(folder_);
    }
    if (innermost == this) {
        innermost = outer_;
        return;
    }
    OpenListing* inner = innermost;
    while (inner->outer_ != this) {
        inner = inner->outer_;
    }
    inner->outer_ = outer_;
    inner->isBelowOuter_ = false;
}

bool OpenListing::next() {
    if (reader_.isParked()) {
        error_ = folder_.isOpen() ? 0 : reopen();
        if (error_ != 0) {
            return false;
        }
        reader_.resume(folder_.get());
    }
    return reader_.next();
}

bool OpenListing::standsOnFolder(const std::u16string& path) const noexcept {
    return entryPath_ == path && folder_.isOpen() && reader_.type() == DT_DIR;
}

/// Opens a folder from the listing that stands on it, or by its path. Where there are no descriptors left,
/// the outer listings of this thread give theirs up.
FileDescriptor OpenListing::openOrThrow(const std::u16string& path, const OpenListing* outer) {
    const auto open = [&] { return outer != nullptr ? openFolder(outer->entry()) : openByPath(path); };
    FileDescriptor folder = open();
    while (!folder.isOpen() && isOutOfDescriptors(errno) && closeOne()) {
        folder = open();
    }
    if (!folder.isOpen()) {
        throwError(errno, path);
    }
    return folder;
}

/// Parks one of the listings around the innermost one, if any is open.
bool OpenListing::closeOne() {
    if (innermost == nullptr) {
        return false;
    }
    for (OpenListing* listing = innermost->outer_; listing != nullptr; listing = listing->outer_) {
        if (listing->folder_.isOpen() && listing->park()) {
            return true;
        }
    }
    return false;
}

/// Another listing begins while this one is under way.
void OpenListing::makeWay() {
    if (!reader_.isParked() && !place_.acquire()) {
        park();  // or stay open, where that fails
    }
}

/// Closes the folder until its turn comes again; false where it cannot be told from others.
bool OpenListing::park() {
    struct stat status;
    if (readStatus(folder_.get(), status) != 0) {
        return false;
    }
    device_ = status.st_dev;
    inode_ = status.st_ino;
    if (!reader_.isParked()) {
        reader_.park();
    }
    folder_.reset();
    return true;
}

/// Opens the folder again by the way up from one in it, if that still leads here. If not, its path will.
void OpenListing::reopenFrom(const FileDescriptor& below) noexcept {
    if (folder_.isOpen() || !reader_.isParked()) {
        return;
    }
    FileDescriptor folder = openFolder({below.get(), ".."});
    if (folder.isOpen() && identityError(folder) == 0) {
        folder_ = std::move(folder);
    }
}

int OpenListing::reopen() {
    FileDescriptor folder = openByPath(folderOf(entryPath_));
    while (!folder.isOpen() && isOutOfDescriptors(errno) && closeOne()) {
        folder = openByPath(folderOf(entryPath_));
    }
    const int error = folder.isOpen() ? identityError(folder) : errno;
    if (error == 0) {
        folder_ = std::move(folder);
    }
    return error;
}

/// ESTALE where this is not the folder that was left.
int OpenListing::identityError(const FileDescriptor& folder) const noexcept {
    struct stat status;
    if (const int error = readStatus(folder.get(), status); error != 0) {
        return error;
    }
    return status.st_dev == device_ && status.st_ino == inode_ ? 0 : ESTALE;
}

}  // namespace fl::filesystem::posix
