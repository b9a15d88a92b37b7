#pragma once

#include <pkgcore/filesystem/FileSystemOps.hpp>

namespace opc {

/// The back end for native paths. It holds no data: every operation is a function of its arguments and the
/// disk, and one object serves any number of threads.
///
/// Failures of the file system arrive as codes of the generic category (`boost::system::errc`); a failure
/// without a name there carries the host's own number in the system category. getExtension, getFilename,
/// normalizePath, isAbsolutePath and the two stream factories let exceptions of the platform's path library
/// pass.
class PKGCORE_API LocalFileSystemOps : public FileSystemOps {
public:
    /// There is nothing to copy, to move or to assign.
    /// @{
    LocalFileSystemOps();
    LocalFileSystemOps(const LocalFileSystemOps&);
    LocalFileSystemOps(LocalFileSystemOps&&) noexcept;
    LocalFileSystemOps& operator=(const LocalFileSystemOps&);
    LocalFileSystemOps& operator=(LocalFileSystemOps&&) noexcept;
    ~LocalFileSystemOps() override;
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
};

}  // namespace opc
