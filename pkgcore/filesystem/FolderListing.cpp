#include <pkgcore/filesystem/FolderListing.hpp>

#include <pkgcore/filesystem/FsysExceptionTranslator.hpp>
#include <pkgcore/filesystem/NativeForm.hpp>
#include <pkgcore/filesystem/Translated.hpp>

#include <memory>

namespace opc::detail {

namespace fsys = fl::filesystem;
using fsys::file_status;

namespace {

// NOLINTNEXTLINE(readability-identifier-naming): called like a function
constexpr Translated<translateFsysException> translated;

bool isDots(const fsys::detail::upath_directory_entry& entry) {
    return entry.filename() == fsys::upath_constant::CURRENT_DIRECTORY ||
           entry.filename() == fsys::upath_constant::PARENT_DIRECTORY;
}

}  // namespace

FolderListing::FolderListing(FileSystemOps& ops, const ustring& folder, std::vector<ustring>& files,
                             bool recursive)
    : ops_(ops),
      files_(files),
      recursive_(recursive),
      entries_(nativeForm(folder), fsys::detail::initialization_mode::standard) {}

bool FolderListing::findFolder(ustring& folder) {
    if (standsOnFolder_) {
        entries_.increment();
    }
    for (; entries_.is_open(); entries_.increment()) {
        standsOnFolder_ = take(*entries_, folder);
        if (standsOnFolder_) {
            return true;
        }
    }
    return false;
}

/// Whether the entry is a folder to be listed; files and links are taken into the result.
bool FolderListing::take(const fsys::detail::upath_directory_entry& entry, ustring& folder) {
    const file_status status = entry.status();
    if (file_status::is_regular(status) || file_status::is_symlink(status)) {
        files_.push_back(ops_.normalizePath(entry.full_pathname()));
        return false;
    }
    if (!recursive_ || !file_status::is_directory(status) || isDots(entry)) {
        return false;
    }
    folder = ops_.normalizePath(entry.full_pathname());
    return true;
}

void listTree(FileSystemOps& ops, const ustring& folder, std::vector<ustring>& files, bool recursive,
              std::string& msg, boost::system::error_code& ec) {
    std::vector<std::unique_ptr<FolderListing>> levels;
    ustring next;
    const auto open = [&](const ustring& path) {
        translated(msg, ec,
                   [&] { levels.push_back(std::make_unique<FolderListing>(ops, path, files, recursive)); });
    };
    open(folder);
    while (!levels.empty()) {
        bool found = false;
        // A failure ends the listing of this folder alone: a partial result with a failing code is what a
        // tree with an unreadable folder gives.
        translated(msg, ec, [&] { found = levels.back()->findFolder(next); });
        if (!found) {
            levels.pop_back();
        } else if (!next.empty()) {
            open(next);
        }
    }
}

}  // namespace opc::detail
