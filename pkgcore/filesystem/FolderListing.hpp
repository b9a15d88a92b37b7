#pragma once

#include <pkgcore/core/Ustring.hpp>
#include <pkgcore/filesystem/FileSystemOps.hpp>
#include <pkgcore/platform/filesystem/DirectoryIterator.hpp>

#include <string>
#include <vector>

namespace opc::detail {

/// The listing of one native folder, under way.
class FolderListing {
public:
    /// Opens the folder. Paths are normalized by `ops`, and those of files and links are appended to `files`;
    /// both must outlive the listing. Throws what the platform throws, here and below.
    FolderListing(FileSystemOps& ops, const ustring& folder, std::vector<ustring>& files, bool recursive);

    /// Goes on to the next folder that is to be listed too, and gives its path; false at the end.
    bool findFolder(ustring& folder);

private:
    bool take(const fl::filesystem::detail::upath_directory_entry& entry, ustring& folder);

    FileSystemOps& ops_;
    std::vector<ustring>& files_;
    bool recursive_;
    bool standsOnFolder_ = false;
    fl::filesystem::detail::upath_directory_iterator_impl entries_;
};

/// Lists a folder and, if `recursive`, all below it, in the order and with the failures of calls that are
/// nested, but without nesting: a tree of any depth needs no more of the stack than a folder does. Never
/// throws; reports as the local back end does.
void listTree(FileSystemOps& ops, const ustring& folder, std::vector<ustring>& files, bool recursive,
              std::string& msg, boost::system::error_code& ec);

}  // namespace opc::detail
