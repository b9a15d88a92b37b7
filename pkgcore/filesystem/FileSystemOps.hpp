#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/core/Ustring.hpp>

#include <boost/date_time/posix_time/ptime.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/system/error_code.hpp>

#include <cstdint>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace opc {

/// What copy does about a destination that exists. Any other value counts as Ignore.
/// With IRIs, Ignore is as Fail is.
enum ExistsMode : std::uint32_t {
    Ignore = 0,   ///< a file there is an error; a folder there is copied into
    Fail = 1,     ///< a file or a folder there is an error
    Replace = 2,  ///< a file there is overwritten, a folder there removed with all its contents first
};

/// Permission bits in the octal layout of POSIX `chmod`.
struct Perms {
    /// Bits to be combined with `|`. Values of `chmod` without a name here (set-uid, set-gid, sticky) are
    /// taken and given as they are.
    enum Perms_tag : std::uint32_t {
        OthersExecute = 01,   ///< S_IXOTH
        OthersWrite = 02,     ///< S_IWOTH
        OthersRead = 04,      ///< S_IROTH
        GroupExecute = 010,   ///< S_IXGRP
        GroupWrite = 020,     ///< S_IWGRP
        GroupRead = 040,      ///< S_IRGRP
        OwnerExecute = 0100,  ///< S_IXUSR
        OwnerWrite = 0200,    ///< S_IWUSR
        OwnerRead = 0400,     ///< S_IRUSR
        AnyWrite = 0222,      ///< an item with any of these bits counts as writable
        ReadOnly = 0444,      ///< what virtual storage reports for an item that is not writable
        ReadWrite = 0666,     ///< what virtual storage reports for a writable item
        NotKnown = 0xFFFF,    ///< no permissions could be obtained; setting them does nothing
    };
};

/// One interface to files and folders, whatever kind of storage a path names: native paths
/// (LocalFileSystemOps) or IRIs of a virtual storage system (VirtualFileSystemOps, which says where IRIs
/// differ from what is said here). FileSystemOpsSelector hands out the one that fits a path.
///
/// **Failures.** An operation with a trailing `error_code&` clears it first, never throws, and on failure
/// returns a neutral value: an empty string, false, Perms::NotKnown, not_a_date_time, an empty pointer. The
/// same operation without it throws opc::Exception, whose text is "<operation> failed: " and a description
/// with the path, and whose code() is what the other form would have set. An exception that a back end itself
/// lets escape passes through the throwing form as it is and ends the process in the other.
///
/// **Threads.** The interface holds no state; one object serves any number of threads as far as its back end
/// does.
///
/// **Links** (native paths only) are never followed by queries: exists is true for a dangling link, isFile
/// and isFolder are false for any link.
class PKGCORE_API FileSystemOps {
public:
    /// There is nothing to copy or to assign.
    /// @{
    FileSystemOps();
    FileSystemOps(const FileSystemOps&);
    FileSystemOps& operator=(const FileSystemOps&);  // NOLINT(cert-oop54-cpp): there is nothing to assign
    virtual ~FileSystemOps();
    /// @}

    /// A path in the folder `path` (the system's temporary folder where it is empty) at which nothing was
    /// when it was checked. Nothing is created: another process can take the name first.
    ustring getTempName(const ustring& path);

    /// The path of what holds the item, in generic notation ("/" between names); empty where nothing is
    /// above.
    ustring getParentPath(const ustring& path);

    /// The last name of the path; empty for a root.
    ustring getFilename(const ustring& path);

    /// The text after the last "." of the last name, without the dot; empty where there is none.
    ustring getExtension(const ustring& path);

    /// `base` and `toAppend` joined, in generic notation. One leading "/" of `toAppend` is dropped.
    ustring appendPath(const ustring& base, const ustring& toAppend);

    /// The path in generic notation, tidied as the kind of path allows. The disk is not asked: links stay,
    /// and so does a ".." of a native path.
    ustring normalizePath(const ustring& path);

    /// Whether the path names its item by itself. Reports no failure.
    bool isAbsolutePath(const ustring& path);

    /// Gives the native path of the item, if it has one; else empties `localPath` and returns false.
    bool getLocalPath(const ustring& path, ustring& localPath);

    /// Whether anything is there. "Not found" is an answer; a failure is one to find out.
    /// @{
    bool exists(const ustring& path);
    bool exists(const ustring& path, boost::system::error_code& ec) noexcept;
    /// @}

    /// Whether a file is there (no link, no folder, no device).
    /// @{
    bool isFile(const ustring& path);
    bool isFile(const ustring& path, boost::system::error_code& ec) noexcept;
    /// @}

    /// Whether a folder is there (no link to one).
    /// @{
    bool isFolder(const ustring& path);
    bool isFolder(const ustring& path, boost::system::error_code& ec) noexcept;
    /// @}

    /// Whether a symbolic link is there.
    /// @{
    bool isSymlink(const ustring& path);
    bool isSymlink(const ustring& path, boost::system::error_code& ec) noexcept;
    /// @}

    /// The permission bits of the item; of a link itself. A missing item is a failure.
    /// @{
    Perms::Perms_tag getPermissions(const ustring& path);
    Perms::Perms_tag getPermissions(const ustring& path, boost::system::error_code& ec) noexcept;
    /// @}

    /// Sets the permission bits; Perms::NotKnown does nothing at all. Those of a link itself are meant, never
    /// those of its target: where the host cannot set them that is a failure.
    /// @{
    void setPermissions(const ustring& path, Perms::Perms_tag perms);
    void setPermissions(const ustring& path, Perms::Perms_tag perms, boost::system::error_code& ec) noexcept;
    /// @}

    /// The time of the last change of the content, in UTC. A missing item is a failure.
    /// @{
    boost::posix_time::ptime getLastModifiedTime(const ustring& path);
    boost::posix_time::ptime getLastModifiedTime(const ustring& path, boost::system::error_code& ec) noexcept;
    /// @}

    /// Sets that time (UTC, to the microsecond); not_a_date_time does nothing at all. A time that the file
    /// system cannot hold is a failure and leaves the old one. A fraction finer than its step is rounded
    /// away, and some drop all of the fraction in the first and in the last second that they can hold.
    /// @{
    void setLastModifiedTime(const ustring& path, boost::posix_time::ptime time);
    void setLastModifiedTime(const ustring& path, boost::posix_time::ptime time,
                             boost::system::error_code& ec) noexcept;
    /// @}

    /// The text that a link holds, in generic notation. An item that is no link is a failure.
    /// @{
    ustring getLinkTarget(const ustring& path);
    ustring getLinkTarget(const ustring& path, boost::system::error_code& ec) noexcept;
    /// @}

    /// Appends the full paths of the files (and links) in `folder`, with `recursive` of those in all folders
    /// below as well; folders themselves are not listed. What was in `files` stays. After a failure `files`
    /// holds what could be read: an unreadable folder somewhere below does not end the listing, but is
    /// reported.
    /// @{
    void getFiles(const ustring& folder, std::vector<ustring>& files, bool recursive);
    void getFiles(const ustring& folder, std::vector<ustring>& files, bool recursive,
                  boost::system::error_code& ec) noexcept;
    /// @}

    /// Opens a file for reading; `mode` holds flags of std::ios_base::openmode. Others may read and write the
    /// file meanwhile. The file closes with the last owner of the stream. A folder cannot be opened.
    /// @{
    boost::shared_ptr<std::istream> createInputStream(const ustring& path, int mode);
    boost::shared_ptr<std::istream> createInputStream(const ustring& path, int mode,
                                                      boost::system::error_code& ec) noexcept;
    /// @}

    /// Opens a file for writing; `mode` decides as in std::ofstream: a missing file is created and an
    /// existing one emptied, but not with std::ios_base::app (created, and appended to) or with
    /// std::ios_base::in (must exist, and keeps its content) among the flags. Flush the stream
    /// and look at its state before letting go of it: a failure to write shows there.
    /// @{
    boost::shared_ptr<std::ostream> createOutputStream(const ustring& path, int mode);
    boost::shared_ptr<std::ostream> createOutputStream(const ustring& path, int mode,
                                                       boost::system::error_code& ec) noexcept;
    /// @}

    /// Makes one folder. Its parent must exist; anything at the path is a failure.
    /// @{
    void createFolder(const ustring& path);
    void createFolder(const ustring& path, boost::system::error_code& ec) noexcept;
    /// @}

    /// Makes the folder and all that are missing above it; folders that exist are fine. Those made before a
    /// failure stay.
    /// @{
    void createFolders(const ustring& path);
    void createFolders(const ustring& path, boost::system::error_code& ec) noexcept;
    /// @}

    /// Makes a link at `link`; anything there is a failure. Each "/" of `target` is written as "\"; the
    /// target is not looked at, and a relative one stays relative.
    /// @{
    void createSymlink(const ustring& target, const ustring& link);
    void createSymlink(const ustring& target, const ustring& link, boost::system::error_code& ec) noexcept;
    /// @}

    /// Copies a file, a link itself, or a folder with all that it holds; `mode` decides about a destination
    /// that exists (for links nothing ever is replaced). A file is copied whole or not at all: a failed copy
    /// leaves the old destination as it was, or none. A folder copy that fails leaves what it had copied;
    /// with Replace, the old destination is gone by then. A pipe, a socket or a device as the source is
    /// passed over without a word; within a folder it is a failure.
    ///
    /// **Replace removes a folder at the destination before anything is copied, and does not look whether the
    /// source is that folder or lies in it: then the source is removed with it.** Compare the paths before.
    /// @{
    void copy(const ustring& from, const ustring& to, ExistsMode mode);
    void copy(const ustring& from, const ustring& to, ExistsMode mode,
              boost::system::error_code& ec) noexcept;
    /// @}

    /// Moves an item, also onto another file system. A file or a link at the destination is replaced, and an
    /// empty folder by a folder; a folder that holds something is a failure. The item is never lost: a
    /// failure leaves it whole at one of the two places, and, where the old place on another file system
    /// could not be cleared, with a rest there. Two names of one file (hard links) stay as they are, as POSIX
    /// has it.
    /// @{
    void rename(const ustring& from, const ustring& to);
    void rename(const ustring& from, const ustring& to, boost::system::error_code& ec) noexcept;
    /// @}

    /// Removes a file, a link itself, or an empty folder. A missing item is a failure.
    /// @{
    void remove(const ustring& path);
    void remove(const ustring& path, boost::system::error_code& ec) noexcept;
    /// @}

    /// Removes the item with everything in it; links in it are removed, not followed. A missing item is a
    /// failure. What can be removed is removed even if something else cannot.
    /// @{
    void removeAll(const ustring& path);
    void removeAll(const ustring& path, boost::system::error_code& ec) noexcept;
    /// @}

protected:
    /// What a back end implements: the operation of the same name. On failure it assigns a failing code to
    /// `ec` and an English description to `msg`, without the operation's name; on success it leaves both
    /// alone. The order is that of the virtual table: it is part of the binary interface.
    /// @{
    virtual ustring doGetTempName(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual ustring doGetParentPath(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual ustring doGetFilename(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual ustring doGetExtension(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual ustring doAppendPath(const ustring& base, const ustring& toAppend, std::string& msg,
                                 boost::system::error_code& ec) = 0;
    virtual ustring doNormalizePath(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual bool doGetLocalPath(const ustring& path, ustring& localPath) = 0;
    virtual bool doIsAbsolutePath(const ustring& path) = 0;
    virtual bool doExists(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual bool doIsFile(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual bool doIsFolder(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual bool doIsSymlink(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual Perms::Perms_tag doGetPermissions(const ustring& path, std::string& msg,
                                              boost::system::error_code& ec) = 0;
    virtual void doSetPermissions(const ustring& path, Perms::Perms_tag perms, std::string& msg,
                                  boost::system::error_code& ec) = 0;
    virtual boost::posix_time::ptime doGetLastModifiedTime(const ustring& path, std::string& msg,
                                                           boost::system::error_code& ec) = 0;
    virtual void doSetLastModifiedTime(const ustring& path, boost::posix_time::ptime time, std::string& msg,
                                       boost::system::error_code& ec) = 0;
    virtual ustring doGetLinkTarget(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual void doGetFiles(const ustring& folder, std::vector<ustring>& files, bool recursive,
                            std::string& msg, boost::system::error_code& ec) = 0;
    virtual boost::shared_ptr<std::istream> doCreateInputStream(const ustring& path, int mode,
                                                                std::string& msg,
                                                                boost::system::error_code& ec) = 0;
    virtual boost::shared_ptr<std::ostream> doCreateOutputStream(const ustring& path, int mode,
                                                                 std::string& msg,
                                                                 boost::system::error_code& ec) = 0;
    virtual void doCreateFolder(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual void doCreateFolders(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual void doCreateSymlink(const ustring& target, const ustring& link, std::string& msg,
                                 boost::system::error_code& ec) = 0;
    virtual void doCopy(const ustring& from, const ustring& to, ExistsMode mode, std::string& msg,
                        boost::system::error_code& ec) = 0;
    virtual void doRename(const ustring& from, const ustring& to, std::string& msg,
                          boost::system::error_code& ec) = 0;
    virtual void doRemove(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    virtual void doRemoveAll(const ustring& path, std::string& msg, boost::system::error_code& ec) = 0;
    /// @}
};

}  // namespace opc
