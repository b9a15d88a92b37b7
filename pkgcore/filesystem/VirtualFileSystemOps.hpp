#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/filesystem/FileSystemOps.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>

namespace opc {

/// The back end for IRIs of a virtual storage system. It holds a reference to that system and nothing else;
/// one object serves any number of threads, as long as none assigns to it.
///
/// What differs from native paths:
///
/// - Failures of the storage system arrive as codes of the generic category (`boost::system::errc`), with its
///   own text and the IRI concerned. A text that is no IRI is bad_address, an IRI whose scheme is not mounted
///   is address_family_not_supported. A failure that the storage system has no known code for gives a text
///   and no code: it does not count as a failure.
/// - getFilename, getExtension and getLocalPath let exceptions of the storage library pass.
/// - There are no links: isSymlink is false for everything, getLinkTarget and createSymlink fail with
///   operation_not_supported.
/// - Permissions are one bit: Perms::ReadWrite or Perms::ReadOnly; setting them makes the item writable if
///   any write bit is set, else read-only.
/// - copy treats ExistsMode::Fail as ExistsMode::Ignore: in both, what exists at the destination is a
///   failure, a folder where a folder is copied included. rename replaces what is at the destination, a
///   folder with its contents included. Onto or into itself neither does anything but fail (rename onto the
///   very same place succeeds); a file never replaces a folder nor a folder a file.
/// - setLastModifiedTime of a missing item and getFiles of an empty path are failures, whatever the time.
/// - A stream that cannot be opened is io_error without a description, whatever the reason, unless the IRI
///   itself is refused.
/// - normalizePath makes an IRI with the scheme "file" of a native path. getTempName takes an IRI for the
///   folder, and looks for a free name until it finds one or the look-up fails.
class PKGCORE_API VirtualFileSystemOps : public FileSystemOps {
public:
    /// Works on `storage` and keeps it alive.
    explicit VirtualFileSystemOps(foundation::storage::vfs::StorageSystemReference storage);

    /// Copies work on the same storage system. One that was moved from has none: destroy it or assign to it.
    /// @{
    VirtualFileSystemOps(const VirtualFileSystemOps&);
    VirtualFileSystemOps(VirtualFileSystemOps&&) noexcept;
    VirtualFileSystemOps& operator=(const VirtualFileSystemOps&);
    VirtualFileSystemOps& operator=(VirtualFileSystemOps&&) noexcept;
    ~VirtualFileSystemOps() override;
    /// @}

protected:
    ustring doGetTempName(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    ustring doGetParentPath(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    ustring doGetFilename(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    ustring doGetExtension(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    ustring doAppendPath(const ustring& base, const ustring& toAppend, std::string& msg,
                         boost::system::error_code& ec) override;
    ustring doNormalizePath(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    bool doGetLocalPath(const ustring& path, ustring& localPath) override;
    bool doIsAbsolutePath(const ustring& path) override;
    bool doExists(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    bool doIsFile(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    bool doIsFolder(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    bool doIsSymlink(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    Perms::Perms_tag doGetPermissions(const ustring& path, std::string& msg,
                                      boost::system::error_code& ec) override;
    void doSetPermissions(const ustring& path, Perms::Perms_tag perms, std::string& msg,
                          boost::system::error_code& ec) override;
    boost::posix_time::ptime doGetLastModifiedTime(const ustring& path, std::string& msg,
                                                   boost::system::error_code& ec) override;
    void doSetLastModifiedTime(const ustring& path, boost::posix_time::ptime time, std::string& msg,
                               boost::system::error_code& ec) override;
    ustring doGetLinkTarget(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    void doGetFiles(const ustring& folder, std::vector<ustring>& files, bool recursive, std::string& msg,
                    boost::system::error_code& ec) override;
    boost::shared_ptr<std::istream> doCreateInputStream(const ustring& path, int mode, std::string& msg,
                                                        boost::system::error_code& ec) override;
    boost::shared_ptr<std::ostream> doCreateOutputStream(const ustring& path, int mode, std::string& msg,
                                                         boost::system::error_code& ec) override;
    void doCreateFolder(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    void doCreateFolders(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    void doCreateSymlink(const ustring& target, const ustring& link, std::string& msg,
                         boost::system::error_code& ec) override;
    void doCopy(const ustring& from, const ustring& to, ExistsMode mode, std::string& msg,
                boost::system::error_code& ec) override;
    void doRename(const ustring& from, const ustring& to, std::string& msg,
                  boost::system::error_code& ec) override;
    void doRemove(const ustring& path, std::string& msg, boost::system::error_code& ec) override;
    void doRemoveAll(const ustring& path, std::string& msg, boost::system::error_code& ec) override;

private:
    foundation::storage::vfs::StorageSystemReference getStorageSystem() const;

    foundation::storage::vfs::StorageSystemReference storage_;
};

}  // namespace opc
