#include <pkgcore/platform/filesystem/DirectoryIterator.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/FileStatus.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/FolderReader.hpp>
#include <pkgcore/portable/filesystem/ItemKind.hpp>
#include <pkgcore/portable/filesystem/NativePath.hpp>
#include <pkgcore/portable/filesystem/PathText.hpp>
#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <dirent.h>
#include <fcntl.h>

#include <cerrno>

namespace fl::filesystem::detail {

namespace {

posix::FileDescriptor openFolder(const std::u16string& path) {
    const posix::Place place(path);
    posix::FileDescriptor folder =
        posix::openAt(place.orThrow().directory(), place.path(), O_RDONLY | O_DIRECTORY);
    if (!folder.isOpen()) {
        posix::throwError(errno, path);
    }
    return folder;
}

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

/// The folder being listed. Its descriptor goes as soon as the rest of the records is in memory.
class upath_directory_iterator_impl::Source {
public:
    explicit Source(const std::u16string& folder) : folder_(openFolder(folder)), reader_(folder_.get()) {}

    bool next() {
        const bool found = reader_.next();
        if (reader_.isComplete()) {
            folder_.reset();
        }
        return found;
    }

    const posix::FolderReader& reader() const noexcept { return reader_; }

private:
    posix::FileDescriptor folder_;
    posix::FolderReader reader_;
};

upath_directory_iterator_impl::upath_directory_iterator_impl(const std::u16string& nativeFolder,
                                                             initialization_mode /*mode*/)
    : source_(std::make_unique<Source>(nativeFolder)) {
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
    path.resize(entry_.nameOffset_);
    if (!source_->next()) {
        const int error = source_->reader().error();
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
