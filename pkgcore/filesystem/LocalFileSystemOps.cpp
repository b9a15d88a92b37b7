#include <pkgcore/filesystem/LocalFileSystemOps.hpp>

#include <pkgcore/core/MessageText.hpp>
#include <pkgcore/filesystem/FolderListing.hpp>
#include <pkgcore/filesystem/FsysExceptionTranslator.hpp>
#include <pkgcore/filesystem/NativeForm.hpp>
#include <pkgcore/filesystem/PathHelpers.hpp>
#include <pkgcore/filesystem/RelativeText.hpp>
#include <pkgcore/filesystem/Translated.hpp>
#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/FileStreams.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/platform/path/PathSyntax.hpp>
#include <pkgcore/util/TempNames.hpp>

#include <boost/make_shared.hpp>

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace opc {

using boost::posix_time::ptime;
using boost::system::error_code;
using fl::filesystem::file_status;
namespace errc = boost::system::errc;
namespace fsys = fl::filesystem;

namespace {

// NOLINTNEXTLINE(readability-identifier-naming): called like a function
constexpr detail::Translated<detail::translateFsysException> translated;

void requireNonEmpty(const ustring& path) {
    if (path.empty()) {
        throw fsys::InvalidArgument("Empty path not permitted", ustring(), {});
    }
}

file_status statusOfExisting(const ustring& path) {
    const file_status status = fsys::symlink_status(path);
    if (status.kind == file_status::file_not_found) {
        // Without the path: a missing item is reported by these words alone.
        throw fsys::PathNotFound(ustring());
    }
    return status;
}

void refuse(const char* text, const ustring& path, errc::errc_t code, std::string& msg, error_code& ec) {
    ec = errc::make_error_code(code);
    msg = text + detail::toMessageText(path);
}

void copyFile(const ustring& from, const ustring& to, ExistsMode mode) {
    fsys::copy_file(
        from, to,
        mode == Replace ? fsys::copy_option::overwrite_if_exists : fsys::copy_option::fail_if_exists);
}

/// False, with `msg` and `ec` set, where the destination of a folder copy forbids it.
bool prepareFolderDestination(const ustring& to, ExistsMode mode, std::string& msg, error_code& ec) {
    const bool exists = file_status::exists(fsys::symlink_status(to));
    if (mode == Fail && exists) {
        refuse("Destination exists: ", to, errc::file_exists, msg, ec);
        return false;
    }
    if (mode == Replace && exists) {
        fsys::remove_all(to);
    }
    return true;
}

/// Opens a stream of the platform on the path; an empty pointer and io_error, without words, where that
/// fails.
template <typename Stream>
boost::shared_ptr<Stream> openStream(const ustring& path, std::ios_base::openmode mode, error_code& ec) {
    auto stream = boost::make_shared<Stream>();
    stream->open(fsys::detail::make_native_access_form_with_cleanup(path), mode, fsys::share_mode::deny_none);
    if (stream->fail()) {
        ec = errc::make_error_code(errc::io_error);
        stream.reset();
    }
    return stream;
}

}  // namespace

LocalFileSystemOps::LocalFileSystemOps() = default;
LocalFileSystemOps::LocalFileSystemOps(const LocalFileSystemOps&) = default;
LocalFileSystemOps::LocalFileSystemOps(LocalFileSystemOps&&) noexcept = default;
LocalFileSystemOps& LocalFileSystemOps::operator=(const LocalFileSystemOps&) = default;
LocalFileSystemOps& LocalFileSystemOps::operator=(LocalFileSystemOps&&) noexcept = default;
LocalFileSystemOps::~LocalFileSystemOps() = default;

ustring LocalFileSystemOps::doGetTempName(const ustring& path, std::string& msg, error_code& ec) {
    return translated(ustring(), msg, ec, [&] { return util::getTempName(path, ustring(), ustring()); });
}

ustring LocalFileSystemOps::doGetParentPath(const ustring& path, std::string& msg, error_code& ec) {
    return translated(ustring(), msg, ec, [&] { return detail::getParentPath(path); });
}

ustring LocalFileSystemOps::doGetFilename(const ustring& path, std::string& /*msg*/, error_code& /*ec*/) {
    return detail::getFilename(path);
}

ustring LocalFileSystemOps::doGetExtension(const ustring& path, std::string& /*msg*/, error_code& /*ec*/) {
    return detail::getExtension(path);
}

ustring LocalFileSystemOps::doNormalizePath(const ustring& path, std::string& /*msg*/, error_code& /*ec*/) {
    return detail::normalizePath(path);
}

ustring LocalFileSystemOps::doAppendPath(const ustring& base, const ustring& toAppend, std::string& msg,
                                         error_code& ec) {
    return translated(ustring(), msg, ec, [&] {
        ustring joined = detail::nativeForm(base);
        const ustring rest = detail::relativeText(toAppend);
        if (!rest.empty()) {
            joined = fsys::detail::concatenate_pathname(joined, rest, true);
        }
        return fsys::detail::make_generic_form(std::move(joined));
    });
}

bool LocalFileSystemOps::doGetLocalPath(const ustring& path, ustring& localPath) {
    localPath = path;  // also right where both are the same object
    return true;
}

bool LocalFileSystemOps::doIsAbsolutePath(const ustring& path) {
    return fsys::detail::is_absolute(detail::nativeForm(path));
}

bool LocalFileSystemOps::doExists(const ustring& path, std::string& msg, error_code& ec) {
    return translated(false, msg, ec, [&] { return file_status::exists(fsys::symlink_status(path)); });
}

bool LocalFileSystemOps::doIsFile(const ustring& path, std::string& msg, error_code& ec) {
    return translated(false, msg, ec, [&] { return file_status::is_regular(fsys::symlink_status(path)); });
}

bool LocalFileSystemOps::doIsFolder(const ustring& path, std::string& msg, error_code& ec) {
    return translated(false, msg, ec, [&] { return file_status::is_directory(fsys::symlink_status(path)); });
}

bool LocalFileSystemOps::doIsSymlink(const ustring& path, std::string& msg, error_code& ec) {
    return translated(false, msg, ec, [&] { return file_status::is_symlink(fsys::symlink_status(path)); });
}

Perms::Perms_tag LocalFileSystemOps::doGetPermissions(const ustring& path, std::string& msg, error_code& ec) {
    constexpr unsigned kKept = file_status::perms_all | file_status::archive_file |
                               file_status::non_indexed_file | file_status::hidden_file |
                               file_status::system_file;
    return translated(Perms::NotKnown, msg, ec, [&] {
        return static_cast<Perms::Perms_tag>(statusOfExisting(path).permissions & kKept);
    });
}

void LocalFileSystemOps::doSetPermissions(const ustring& path, Perms::Perms_tag perms, std::string& msg,
                                          error_code& ec) {
    if (perms == Perms::NotKnown) {
        return;
    }
    translated(msg, ec, [&] {
        requireNonEmpty(path);
        fsys::permissions(path, perms | file_status::perms_symlink);
    });
}

ptime LocalFileSystemOps::doGetLastModifiedTime(const ustring& path, std::string& msg, error_code& ec) {
    return translated(ptime(boost::posix_time::not_a_date_time), msg, ec,
                      [&] { return statusOfExisting(path).lastWriteTime; });
}

void LocalFileSystemOps::doSetLastModifiedTime(const ustring& path, ptime time, std::string& msg,
                                               error_code& ec) {
    if (time.is_not_a_date_time()) {
        return;
    }
    translated(msg, ec, [&] { fsys::last_write_time(path, time); });
}

ustring LocalFileSystemOps::doGetLinkTarget(const ustring& path, std::string& msg, error_code& ec) {
    return translated(ustring(), msg, ec, [&] { return normalizePath(fsys::read_symlink(path)); });
}

void LocalFileSystemOps::doGetFiles(const ustring& folder, std::vector<ustring>& files, bool recursive,
                                    std::string& msg, error_code& ec) {
    if (folder.empty()) {
        return;
    }
    // Only a class derived from this one can have another way to list the folders below.
    if (typeid(*this) == typeid(LocalFileSystemOps)) {
        detail::listTree(*this, folder, files, recursive, msg, ec);
        return;
    }
    translated(msg, ec, [&] {
        detail::FolderListing listing(*this, folder, files, recursive);
        // A failure below is reported through ec and does not end this listing.
        for (ustring below; listing.findFolder(below);) {
            doGetFiles(below, files, true, msg, ec);
        }
    });
}

boost::shared_ptr<std::istream> LocalFileSystemOps::doCreateInputStream(const ustring& path, int mode,
                                                                        std::string& /*msg*/,
                                                                        error_code& ec) {
    return openStream<fsys::basic_ifstream<char>>(
        path, static_cast<std::ios_base::openmode>(mode) | std::ios_base::in, ec);
}

boost::shared_ptr<std::ostream> LocalFileSystemOps::doCreateOutputStream(const ustring& path, int mode,
                                                                         std::string& /*msg*/,
                                                                         error_code& ec) {
    return openStream<fsys::basic_ofstream<char>>(
        path, static_cast<std::ios_base::openmode>(mode) | std::ios_base::out, ec);
}

void LocalFileSystemOps::doCreateFolder(const ustring& path, std::string& msg, error_code& ec) {
    translated(msg, ec, [&] { fsys::create_directory(path); });
}

void LocalFileSystemOps::doCreateFolders(const ustring& path, std::string& msg, error_code& ec) {
    translated(msg, ec, [&] { fsys::create_directories(path); });
}

void LocalFileSystemOps::doCreateSymlink(const ustring& target, const ustring& link, std::string& msg,
                                         error_code& ec) {
    translated(msg, ec, [&] {
        ustring written = target;
        std::replace(written.begin(), written.end(), u'/', u'\\');
        // Every link is made as one to a file, also where the target is a folder.
        fsys::create_symlink(written, link, file_status::regular_file);
    });
}

void LocalFileSystemOps::doCopy(const ustring& from, const ustring& to, ExistsMode mode, std::string& msg,
                                error_code& ec) {
    translated(msg, ec, [&] {
        const file_status source = fsys::symlink_status(from);
        if (!file_status::exists(source)) {
            refuse("Source does not exist: ", from, errc::no_such_file_or_directory, msg, ec);
        } else if (file_status::is_regular(source)) {
            copyFile(from, to, mode);
        } else if (file_status::is_directory(source)) {
            if (prepareFolderDestination(to, mode, msg, ec)) {
                fsys::copy_directory(from, to);
            }
        } else if (file_status::is_symlink(source)) {
            fsys::copy_symlink(from, to);
        }
        // A source of any other kind is passed over in silence.
    });
}

void LocalFileSystemOps::doRename(const ustring& from, const ustring& to, std::string& msg, error_code& ec) {
    translated(msg, ec, [&] {
        requireNonEmpty(from);
        requireNonEmpty(to);
        fsys::rename(from, to);
    });
}

void LocalFileSystemOps::doRemove(const ustring& path, std::string& msg, error_code& ec) {
    translated(msg, ec, [&] { fsys::remove(path); });
}

void LocalFileSystemOps::doRemoveAll(const ustring& path, std::string& msg, error_code& ec) {
    translated(msg, ec, [&] { fsys::remove_all(path); });
}

}  // namespace opc
