#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/filesystem/FileStatus.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

#include <string>

/// @file
/// Operations on native paths. Required of all of them: a failure leaves as an exception derived from
/// FsysExceptionBase (Exceptions.hpp) that names the path; any thread may call them at any time; no
/// descriptor and no temporary item is left behind on any way out. Paths may be longer than the host's limit
/// for one call. A trailing separator names the item itself, never what a link there points to. A path with a
/// NUL, or one that has no form in the host's encoding of names, is FileNameConversionFailure; nothing is
/// ever found at an empty path.
namespace fl::filesystem {

/// The status of the item itself; a link is reported as a link. A path whose last or any earlier element is
/// missing, or that leads through something that is no folder, has the kind `file_not_found`: that is an
/// answer, no failure.
PKGCORE_PLATFORM_API file_status symlink_status(const std::u16string& path);

/// Whether anything is at the path, a dangling link included.
PKGCORE_PLATFORM_API bool exists(const std::u16string& path);

/// What copy_file does about a destination that exists.
enum class copy_option : unsigned {
    fail_if_exists = 0,
    overwrite_if_exists = 1,
};

/// Copies the content and the nine permission bits of a regular file; set-uid, set-gid, the sticky bit, times
/// and owner are not carried over. At no moment is the copy more open than its source. Holes stay holes. What
/// counts is what can be read, not the size that the file claims: files of /proc and growing files are copied
/// to their end.
///
/// fail_if_exists: the destination is created exclusively; anything there is FileExistsError; a failed copy
/// removes what it had created. overwrite_if_exists: the content goes to a temporary sibling that is renamed
/// over the destination when it is complete, so that a failed copy leaves the old destination whole, and who
/// has that open keeps reading it; a folder there is FileIsDirectory, a link there is itself replaced, and
/// any other kind (a pipe, a device) is InvalidOperation. Either way nothing is written before that is known.
///
/// A file onto itself, under whatever name, is FileExistsError. A source that is a folder is FileIsDirectory,
/// one that is no regular file otherwise, a link included, InvalidOperation (copy_symlink copies links); it
/// is not opened, and a pipe never blocks. The data is not forced to the disk.
PKGCORE_PLATFORM_API void copy_file(const std::u16string& from, const std::u16string& to, copy_option option);

/// Copies a whole folder: files as copy_file with fail_if_exists, links as links, byte by byte; folders are
/// created with the nine permission bits of their source or, where they exist, merged and left with their own
/// bits. A folder that is being filled is its owner's alone until it is full. `to` may be missing, but not
/// the folder around it.
///
/// Anything but a folder in a folder's place is NotDirectoryError; a link is such a thing, even one to a
/// folder and even at `from` or `to` itself, so that nothing is written or read elsewhere than said. Links
/// earlier in both paths are followed. Anything at all in a file's or a link's place is FileExistsError.
/// Kinds other than files, links and folders are InvalidOperation. A folder into itself or below is
/// InvalidArgument before anything is written.
///
/// The first failure ends the copy and names the item at which it happened, on the side concerned. What was
/// copied stays; the folders that were being filled stay their owner's alone. A folder exchanged for a link
/// meanwhile is a failure and never followed. Any depth will do, with few descriptors.
PKGCORE_PLATFORM_API void copy_directory(const std::u16string& from, const std::u16string& to);

/// Makes a link at `to` with the text of the link at `from`. FileExistsError if anything is at `to`.
PKGCORE_PLATFORM_API void copy_symlink(const std::u16string& from, const std::u16string& to);

/// Moves an item, a link itself, replacing what the host's rename replaces: a file or link, or an empty
/// folder by a folder. A folder that holds something is DirectoryNotEmpty, a file onto a folder
/// FileIsDirectory, a folder onto something else NotDirectoryError, a folder into itself InvalidArgument. Two
/// names of one item stay as they are, as POSIX has it. "." or ".." as the last element is InvalidArgument.
///
/// Onto another file system the item is copied to a temporary sibling of the destination, with the nine
/// permission bits and the times, then renamed into place, and, once it is on the disk, removed at its old
/// place. That works for files, links and folders of them; other kinds are InvalidOperation. A failure before
/// the renaming leaves the source whole, the destination as it was and nothing beside it; a failure to bring
/// the copy to the disk leaves both. A failure of removing the source after that is thrown as remove_all
/// throws it; the destination is then complete.
PKGCORE_PLATFORM_API void rename(const std::u16string& from, const std::u16string& to);

/// Removes a file, a link itself, or an empty folder. A missing path is PathNotFound, a folder that holds
/// something DirectoryNotEmpty; "." or ".." as the last element is InvalidArgument.
PKGCORE_PLATFORM_API void remove(const std::u16string& path);

/// Removes the item with everything in it; never follows a link, not even one that is swapped in during the
/// call. Goes on after a failure and throws the first one at the end, with the path of the item concerned:
/// what could be removed is gone then. A folder that may not be read is such a failure unless it is empty. A
/// missing path is PathNotFound; "." or ".." as the last element, and the root, are InvalidArgument before
/// anything is removed. Any depth will do, with few descriptors.
PKGCORE_PLATFORM_API void remove_all(const std::u16string& path);

/// Makes one folder; FileExistsError if anything is there, a folder or a dangling link included. Returns
/// true.
PKGCORE_PLATFORM_API bool create_directory(const std::u16string& path);

/// Makes the folder and every missing one above it; folders that exist are fine. Something else in the way is
/// NotDirectoryError. Folders made before a failure stay. Returns whether the last one was made.
PKGCORE_PLATFORM_API bool create_directories(const std::u16string& path);

/// Makes a link that holds `target` to the letter; `kind` (file_status::regular_file or directory_file) is
/// for hosts that tell links to files from links to folders. FileExistsError if anything is at `link`. The
/// target is not looked at.
PKGCORE_PLATFORM_API void create_symlink(const std::u16string& target, const std::u16string& link,
                                         unsigned kind);

/// The text that the link holds. InvalidArgument for an item that is no link.
PKGCORE_PLATFORM_API std::u16string read_symlink(const std::u16string& path);

/// Sets the permission bits (file_status::perms_all) of an item. With file_status::perms_symlink a link is
/// acted on itself, which is InvalidOperation where the host cannot; without it the link is followed. Other
/// bits are ignored.
PKGCORE_PLATFORM_API void permissions(const std::u16string& path, unsigned bits);

/// Sets the last-write time (UTC, to the microsecond) of the item itself. A time that the file system would
/// keep as another one, and a special time, is InvalidArgument; the old time is then in place again.
PKGCORE_PLATFORM_API void last_write_time(const std::u16string& path, boost::posix_time::ptime time);

}  // namespace fl::filesystem
