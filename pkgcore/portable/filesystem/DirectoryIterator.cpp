#include <pkgcore/platform/filesystem/DirectoryIterator.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/FileStatus.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/ItemKind.hpp>
#include <pkgcore/portable/filesystem/OpenListing.hpp>
#include <pkgcore/portable/filesystem/PathText.hpp>

#include <dirent.h>

namespace fl::filesystem::detail {

namespace {

/// What every entry's path begins with, with room for a name behind it.
std::u16string entryPrefix(const std::u16string& folder) {
    constexpr std::size_t kUsualName = 64;
    std::u16string prefix;
    prefix.reserve(folder.size() + 1 + kUsualName);
    prefix += folder;
    if (prefix.back() != u'/') {
        prefix += u'/';
    }
    return prefix;
}

/// The folder that entryPrefix() was made from.
std::u16string folderOf(std::u16string prefix) {
    if (prefix.size() > 1) {
        prefix.pop_back();
    }
    return prefix;
}

}  // namespace

file_status upath_directory_entry::status() const {
    file_status status;
    status.kind = kind_;
    return status;
}

std::u16string_view upath_directory_entry::filename() const noexcept {
    return std::u16string_view(fullPathname_).substr(nameOffset_);
}

class upath_directory_iterator_impl::Source : public posix::OpenListing {
public:
    using OpenListing::OpenListing;
};

upath_directory_iterator_impl::upath_directory_iterator_impl(const std::u16string& nativeFolder,
                                                             initialization_mode /*mode*/)
    : source_(std::make_unique<Source>(nativeFolder, entry_.fullPathname_)) {
    entry_.fullPathname_ = entryPrefix(nativeFolder);
    entry_.nameOffset_ = entry_.fullPathname_.size();
    increment();
}

upath_directory_iterator_impl::~upath_directory_iterator_impl() = default;

bool upath_directory_iterator_impl::is_open() const noexcept { return source_ != nullptr; }

void upath_directory_iterator_impl::increment() {
    if (!is_open()) {
        throw_invalid_operation_exception();
    }
    std::u16string& path = entry_.fullPathname_;
    const bool found = source_->next();
    path.resize(entry_.nameOffset_);
    if (!found) {
        const int error = source_->error();
        source_.reset();
        if (error != 0) {
            posix::throwError(error, folderOf(path));
        }
        return;
    }
    const posix::FolderReader& reader = source_->reader();
    posix::appendDecoded({reader.name(), reader.nameLength()}, path);
    // Some file systems do not keep the kind with the name.
    entry_.kind_ = reader.type() == DT_UNKNOWN ? symlink_status(path).kind : posix::kindOfType(reader.type());
}

const upath_directory_entry& upath_directory_iterator_impl::operator*() const {
    if (!is_open()) {
        throw_invalid_operation_exception();
    }
    return entry_;
}

}  // namespace fl::filesystem::detail
