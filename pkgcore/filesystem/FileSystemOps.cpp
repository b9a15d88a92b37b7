#include <pkgcore/filesystem/FileSystemOps.hpp>

#include <pkgcore/core/Exception.hpp>

#include <type_traits>

namespace opc {

using boost::posix_time::ptime;
using boost::system::error_code;

namespace {

void throwIfFailed(const char* prefix, const std::string& msg, const error_code& ec) {
    // The flag and not the value: a category may count a value other than 0 as success.
    if (ec.failed()) {
        throw Exception(prefix + msg, ec);
    }
}

/// The throwing style: `operation` gets an empty message and a cleared code; a failing code becomes an
/// Exception.
template <typename Operation>
auto orThrow(const char* prefix, Operation operation) {
    std::string msg;
    error_code ec;
    if constexpr (std::is_void_v<decltype(operation(msg, ec))>) {
        operation(msg, ec);
        throwIfFailed(prefix, msg, ec);
    } else {
        auto result = operation(msg, ec);
        throwIfFailed(prefix, msg, ec);
        return result;
    }
}

/// The error-code style: the caller's code is cleared before anything else; nobody reads the message.
template <typename Operation>
auto orReport(error_code& ec, Operation operation) {
    ec = error_code();
    std::string msg;
    return operation(msg);
}

}  // namespace

FileSystemOps::FileSystemOps() = default;
FileSystemOps::FileSystemOps(const FileSystemOps&) = default;
FileSystemOps& FileSystemOps::operator=(const FileSystemOps&) = default;
FileSystemOps::~FileSystemOps() = default;

ustring FileSystemOps::getTempName(const ustring& path) {
    return orThrow("getTempName failed: ", [&](auto& msg, auto& ec) { return doGetTempName(path, msg, ec); });
}

ustring FileSystemOps::getParentPath(const ustring& path) {
    return orThrow("getParentPath failed: ",
                   [&](auto& msg, auto& ec) { return doGetParentPath(path, msg, ec); });
}

ustring FileSystemOps::getFilename(const ustring& path) {
    return orThrow("getFilename failed: ", [&](auto& msg, auto& ec) { return doGetFilename(path, msg, ec); });
}

ustring FileSystemOps::getExtension(const ustring& path) {
    return orThrow("getExtension failed: ",
                   [&](auto& msg, auto& ec) { return doGetExtension(path, msg, ec); });
}

ustring FileSystemOps::appendPath(const ustring& base, const ustring& toAppend) {
    return orThrow("appendPath failed: ",
                   [&](auto& msg, auto& ec) { return doAppendPath(base, toAppend, msg, ec); });
}

ustring FileSystemOps::normalizePath(const ustring& path) {
    return orThrow("normalizePath failed: ",
                   [&](auto& msg, auto& ec) { return doNormalizePath(path, msg, ec); });
}

bool FileSystemOps::isAbsolutePath(const ustring& path) { return doIsAbsolutePath(path); }

bool FileSystemOps::getLocalPath(const ustring& path, ustring& localPath) {
    const bool found = doGetLocalPath(path, localPath);
    if (!found) {
        localPath.clear();
    }
    return found;
}

bool FileSystemOps::exists(const ustring& path) {
    return orThrow("exists failed: ", [&](auto& msg, auto& ec) { return doExists(path, msg, ec); });
}

bool FileSystemOps::exists(const ustring& path, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doExists(path, msg, ec); });
}

bool FileSystemOps::isFile(const ustring& path) {
    return orThrow("isFile failed: ", [&](auto& msg, auto& ec) { return doIsFile(path, msg, ec); });
}

bool FileSystemOps::isFile(const ustring& path, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doIsFile(path, msg, ec); });
}

bool FileSystemOps::isFolder(const ustring& path) {
    return orThrow("isFolder failed: ", [&](auto& msg, auto& ec) { return doIsFolder(path, msg, ec); });
}

bool FileSystemOps::isFolder(const ustring& path, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doIsFolder(path, msg, ec); });
}

bool FileSystemOps::isSymlink(const ustring& path) {
    return orThrow("isSymlink failed: ", [&](auto& msg, auto& ec) { return doIsSymlink(path, msg, ec); });
}

bool FileSystemOps::isSymlink(const ustring& path, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doIsSymlink(path, msg, ec); });
}

Perms::Perms_tag FileSystemOps::getPermissions(const ustring& path) {
    return orThrow("getPermissions failed: ",
                   [&](auto& msg, auto& ec) { return doGetPermissions(path, msg, ec); });
}

Perms::Perms_tag FileSystemOps::getPermissions(const ustring& path, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doGetPermissions(path, msg, ec); });
}

void FileSystemOps::setPermissions(const ustring& path, Perms::Perms_tag perms) {
    return orThrow("setPermissions failed: ",
                   [&](auto& msg, auto& ec) { return doSetPermissions(path, perms, msg, ec); });
}

void FileSystemOps::setPermissions(const ustring& path, Perms::Perms_tag perms, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doSetPermissions(path, perms, msg, ec); });
}

ptime FileSystemOps::getLastModifiedTime(const ustring& path) {
    return orThrow("getLastModifiedTime failed: ",
                   [&](auto& msg, auto& ec) { return doGetLastModifiedTime(path, msg, ec); });
}

ptime FileSystemOps::getLastModifiedTime(const ustring& path, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doGetLastModifiedTime(path, msg, ec); });
}

void FileSystemOps::setLastModifiedTime(const ustring& path, ptime time) {
    return orThrow("setLastModifiedTime failed: ",
                   [&](auto& msg, auto& ec) { return doSetLastModifiedTime(path, time, msg, ec); });
}

void FileSystemOps::setLastModifiedTime(const ustring& path, ptime time, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doSetLastModifiedTime(path, time, msg, ec); });
}

ustring FileSystemOps::getLinkTarget(const ustring& path) {
    return orThrow("getLinkTarget failed: ",
                   [&](auto& msg, auto& ec) { return doGetLinkTarget(path, msg, ec); });
}

ustring FileSystemOps::getLinkTarget(const ustring& path, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doGetLinkTarget(path, msg, ec); });
}

void FileSystemOps::getFiles(const ustring& folder, std::vector<ustring>& files, bool recursive) {
    return orThrow("getFiles failed: ",
                   [&](auto& msg, auto& ec) { return doGetFiles(folder, files, recursive, msg, ec); });
}

void FileSystemOps::getFiles(const ustring& folder, std::vector<ustring>& files, bool recursive,
                             error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doGetFiles(folder, files, recursive, msg, ec); });
}

boost::shared_ptr<std::istream> FileSystemOps::createInputStream(const ustring& path, int mode) {
    return orThrow("createInputStream failed: ",
                   [&](auto& msg, auto& ec) { return doCreateInputStream(path, mode, msg, ec); });
}

boost::shared_ptr<std::istream> FileSystemOps::createInputStream(const ustring& path, int mode,
                                                                 error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doCreateInputStream(path, mode, msg, ec); });
}

boost::shared_ptr<std::ostream> FileSystemOps::createOutputStream(const ustring& path, int mode) {
    return orThrow("createOutputStream failed: ",
                   [&](auto& msg, auto& ec) { return doCreateOutputStream(path, mode, msg, ec); });
}

boost::shared_ptr<std::ostream> FileSystemOps::createOutputStream(const ustring& path, int mode,
                                                                  error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doCreateOutputStream(path, mode, msg, ec); });
}

void FileSystemOps::createFolder(const ustring& path) {
    return orThrow("createFolder failed: ",
                   [&](auto& msg, auto& ec) { return doCreateFolder(path, msg, ec); });
}

void FileSystemOps::createFolder(const ustring& path, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doCreateFolder(path, msg, ec); });
}

void FileSystemOps::createFolders(const ustring& path) {
    return orThrow("createFolders failed: ",
                   [&](auto& msg, auto& ec) { return doCreateFolders(path, msg, ec); });
}

void FileSystemOps::createFolders(const ustring& path, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doCreateFolders(path, msg, ec); });
}

void FileSystemOps::createSymlink(const ustring& target, const ustring& link) {
    return orThrow("createSymlink failed: ",
                   [&](auto& msg, auto& ec) { return doCreateSymlink(target, link, msg, ec); });
}

void FileSystemOps::createSymlink(const ustring& target, const ustring& link, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doCreateSymlink(target, link, msg, ec); });
}

void FileSystemOps::copy(const ustring& from, const ustring& to, ExistsMode mode) {
    return orThrow("copy failed: ", [&](auto& msg, auto& ec) { return doCopy(from, to, mode, msg, ec); });
}

void FileSystemOps::copy(const ustring& from, const ustring& to, ExistsMode mode, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doCopy(from, to, mode, msg, ec); });
}

void FileSystemOps::rename(const ustring& from, const ustring& to) {
    return orThrow("rename failed: ", [&](auto& msg, auto& ec) { return doRename(from, to, msg, ec); });
}

void FileSystemOps::rename(const ustring& from, const ustring& to, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doRename(from, to, msg, ec); });
}

void FileSystemOps::remove(const ustring& path) {
    return orThrow("remove failed: ", [&](auto& msg, auto& ec) { return doRemove(path, msg, ec); });
}

void FileSystemOps::remove(const ustring& path, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doRemove(path, msg, ec); });
}

void FileSystemOps::removeAll(const ustring& path) {
    return orThrow("removeAll failed: ", [&](auto& msg, auto& ec) { return doRemoveAll(path, msg, ec); });
}

void FileSystemOps::removeAll(const ustring& path, error_code& ec) noexcept {
    return orReport(ec, [&](auto& msg) { return doRemoveAll(path, msg, ec); });
}

}  // namespace opc
