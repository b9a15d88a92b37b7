#include <pkgcore/filesystem/VirtualFileSystemOps.hpp>

#include <pkgcore/filesystem/FileIRI.hpp>
#include <pkgcore/filesystem/RelativeText.hpp>
#include <pkgcore/filesystem/StorageEntries.hpp>
#include <pkgcore/filesystem/StorageExceptionTranslator.hpp>
#include <pkgcore/filesystem/StorageTempNames.hpp>
#include <pkgcore/filesystem/Translated.hpp>
#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Existence.hpp>
#include <pkgcore/platform/storage/IRIPrefix.hpp>
#include <pkgcore/platform/storage/Listing.hpp>
#include <pkgcore/platform/storage/NativePaths.hpp>
#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/platform/storage/Streams.hpp>

#include <boost/make_shared.hpp>
#include <boost/variant.hpp>

#include <utility>

namespace opc {

using boost::posix_time::ptime;
using boost::system::error_code;
using foundation::storage::provider::ReplacementPolicy;
using foundation::storage::vfs::AbsoluteIRI;
using foundation::storage::vfs::CanonicalAbsoluteIRI;
using foundation::storage::vfs::ExistenceType;
using foundation::storage::vfs::File;
using foundation::storage::vfs::FileOrFolder;
using foundation::storage::vfs::Folder;
using foundation::storage::vfs::FolderRemovalPolicy;
using foundation::storage::vfs::StorageSystemReference;
namespace errc = boost::system::errc;
namespace vfs = foundation::storage::vfs;

namespace {

// NOLINTNEXTLINE(readability-identifier-naming): called like a function
constexpr detail::Translated<detail::translateCurrentException> translated;

ExistenceType existenceOf(const ustring& path, StorageSystemReference storage) {
    return vfs::exists(CanonicalAbsoluteIRI(path), std::move(storage));
}

class Removing : public boost::static_visitor<> {
public:
    explicit Removing(FolderRemovalPolicy policy) : policy_(policy) {}

    void operator()(const File& file) const { file.removeFile(); }
    void operator()(const Folder& folder) const { folder.removeFolder(policy_); }

private:
    FolderRemovalPolicy policy_;
};

class Copying : public boost::static_visitor<> {
public:
    explicit Copying(ReplacementPolicy policy) : policy_(policy) {}

    void operator()(const detail::SourceAndDestination<File>& files) const {
        files.source.copyFile(files.destination, policy_);
    }
    void operator()(const detail::SourceAndDestination<Folder>& folders) const {
        folders.source.copyFolder(folders.destination, policy_);
    }

private:
    ReplacementPolicy policy_;
};

/// Always replaces.
class Moving : public boost::static_visitor<> {
public:
    void operator()(const detail::SourceAndDestination<File>& files) const {
        files.source.moveFile(files.destination, ReplacementPolicy::ReplaceExisting);
    }
    void operator()(const detail::SourceAndDestination<Folder>& folders) const {
        folders.source.moveFolder(folders.destination, ReplacementPolicy::ReplaceExisting);
    }
};

void appendFiles(vfs::Listing listing, std::vector<ustring>& files) {
    for (vfs::ListEntry& entry : listing) {
        if (File* const file = boost::get<File>(&entry.getFileOrFolder())) {
            files.push_back(std::move(*file).getLocation().toString());
        }
    }
}

/// An empty pointer and io_error, without words, where the stream does not open.
template <typename Stream>
boost::shared_ptr<Stream> openStream(File file, int mode, error_code& ec) {
    auto stream = boost::make_shared<Stream>(std::move(file), static_cast<std::ios_base::openmode>(mode));
    if (stream->fail()) {
        stream.reset();
        ec = errc::make_error_code(errc::io_error);
    }
    return stream;
}

}  // namespace

VirtualFileSystemOps::VirtualFileSystemOps(StorageSystemReference storage) : storage_(std::move(storage)) {}
VirtualFileSystemOps::VirtualFileSystemOps(const VirtualFileSystemOps&) = default;
VirtualFileSystemOps::VirtualFileSystemOps(VirtualFileSystemOps&&) noexcept = default;
VirtualFileSystemOps& VirtualFileSystemOps::operator=(const VirtualFileSystemOps&) = default;
VirtualFileSystemOps& VirtualFileSystemOps::operator=(VirtualFileSystemOps&&) noexcept = default;
VirtualFileSystemOps::~VirtualFileSystemOps() = default;

StorageSystemReference VirtualFileSystemOps::getStorageSystem() const { return storage_; }

ustring VirtualFileSystemOps::doGetTempName(const ustring& path, std::string& msg, error_code& ec) {
    return translated(ustring(), msg, ec, [&] {
        const detail::StorageTempNames names(path);
        ustring candidate;
        // A look-up that fails says "not there" and so ends the loop, with what it reported.
        do {
            candidate = names.draw();
        } while (doExists(candidate, msg, ec));
        return candidate;
    });
}

ustring VirtualFileSystemOps::doGetParentPath(const ustring& path, std::string& msg, error_code& ec) {
    return translated(ustring(), msg, ec, [&] {
        const CanonicalAbsoluteIRI iri(path);
        return iri.hasParent() ? iri.getParent().toString() : ustring();
    });
}

ustring VirtualFileSystemOps::doGetFilename(const ustring& path, std::string& /*msg*/, error_code& /*ec*/) {
    return CanonicalAbsoluteIRI(path).getName();
}

ustring VirtualFileSystemOps::doGetExtension(const ustring& path, std::string& /*msg*/, error_code& /*ec*/) {
    const ustring name = CanonicalAbsoluteIRI(path).getName();
    const std::size_t dot = name.rfind(u'.');
    return dot == ustring::npos ? ustring() : name.substr(dot + 1);
}

ustring VirtualFileSystemOps::doAppendPath(const ustring& base, const ustring& toAppend, std::string& msg,
                                           error_code& ec) {
    return translated(ustring(), msg, ec, [&] {
        return AbsoluteIRI(AbsoluteIRI(base), detail::relativeText(toAppend)).toString();
    });
}

ustring VirtualFileSystemOps::doNormalizePath(const ustring& path, std::string& msg, error_code& ec) {
    return translated(ustring(), msg, ec, [&] {
        // The IRI of a native path is parsed once more, so that it is spelled as any other.
        return AbsoluteIRI(vfs::hasIRIPrefix(path) ? path : detail::toFileIRI(path).toString()).toString();
    });
}

bool VirtualFileSystemOps::doGetLocalPath(const ustring& path, ustring& localPath) {
    const CanonicalAbsoluteIRI iri(path);
    if (iri.getScheme() != detail::kFileScheme) {
        localPath.clear();
        return false;
    }
    localPath = vfs::fromAbsoluteIRI(iri);
    return true;
}

bool VirtualFileSystemOps::doIsAbsolutePath(const ustring& path) {
    if (!vfs::hasIRIPrefix(path)) {
        return false;
    }
    try {
        const AbsoluteIRI parsed(path);
        return true;
    } catch (...) {
        return false;
    }
}

bool VirtualFileSystemOps::doExists(const ustring& path, std::string& msg, error_code& ec) {
    return translated(false, msg, ec,
                      [&] { return existenceOf(path, getStorageSystem()) != ExistenceType::Nothing; });
}

bool VirtualFileSystemOps::doIsFile(const ustring& path, std::string& msg, error_code& ec) {
    return translated(false, msg, ec,
                      [&] { return existenceOf(path, getStorageSystem()) == ExistenceType::File; });
}

bool VirtualFileSystemOps::doIsFolder(const ustring& path, std::string& msg, error_code& ec) {
    return translated(false, msg, ec,
                      [&] { return existenceOf(path, getStorageSystem()) == ExistenceType::Folder; });
}

bool VirtualFileSystemOps::doIsSymlink(const ustring& /*path*/, std::string& /*msg*/, error_code& /*ec*/) {
    return false;
}

Perms::Perms_tag VirtualFileSystemOps::doGetPermissions(const ustring& path, std::string& msg,
                                                        error_code& ec) {
    return translated(Perms::NotKnown, msg, ec, [&] {
        const FileOrFolder entry = detail::resolveEntry(path, getStorageSystem());
        return vfs::isWritable(entry) ? Perms::ReadWrite : Perms::ReadOnly;
    });
}

void VirtualFileSystemOps::doSetPermissions(const ustring& path, Perms::Perms_tag perms, std::string& msg,
                                            error_code& ec) {
    if (perms == Perms::NotKnown) {
        return;
    }
    translated(msg, ec, [&] {
        const bool writable = (perms & Perms::AnyWrite) != 0;
        boost::apply_visitor([writable](const auto& item) { item.setWritable(writable); },
                             detail::resolveEntry(path, getStorageSystem()));
    });
}

ptime VirtualFileSystemOps::doGetLastModifiedTime(const ustring& path, std::string& msg, error_code& ec) {
    return translated(ptime(boost::posix_time::not_a_date_time), msg, ec,
                      [&] { return vfs::getLastModified(detail::resolveEntry(path, getStorageSystem())); });
}

void VirtualFileSystemOps::doSetLastModifiedTime(const ustring& path, ptime time, std::string& msg,
                                                 error_code& ec) {
    translated(msg, ec, [&] {
        boost::apply_visitor([&time](const auto& item) { item.setLastModified(time); },
                             detail::resolveEntry(path, getStorageSystem()));
    });
}

ustring VirtualFileSystemOps::doGetLinkTarget(const ustring& /*path*/, std::string& msg, error_code& ec) {
    detail::reportRefusal(errc::operation_not_supported, "Symlinks are not supported", msg, ec);
    return ustring();
}

void VirtualFileSystemOps::doGetFiles(const ustring& folder, std::vector<ustring>& files, bool recursive,
                                      std::string& msg, error_code& ec) {
    translated(msg, ec, [&] {
        const Folder top = detail::resolveFolder(folder, getStorageSystem());
        appendFiles(recursive ? top.listAllRecursive(ustring()) : top.listAll(ustring()), files);
    });
}

boost::shared_ptr<std::istream> VirtualFileSystemOps::doCreateInputStream(const ustring& path, int mode,
                                                                          std::string& msg, error_code& ec) {
    return translated(boost::shared_ptr<std::istream>(), msg, ec, [&]() -> boost::shared_ptr<std::istream> {
        return openStream<vfs::ifstream>(File(CanonicalAbsoluteIRI(path), getStorageSystem()), mode, ec);
    });
}

boost::shared_ptr<std::ostream> VirtualFileSystemOps::doCreateOutputStream(const ustring& path, int mode,
                                                                           std::string& msg, error_code& ec) {
    return translated(boost::shared_ptr<std::ostream>(), msg, ec, [&]() -> boost::shared_ptr<std::ostream> {
        return openStream<vfs::ofstream>(File(CanonicalAbsoluteIRI(path), getStorageSystem()), mode, ec);
    });
}

void VirtualFileSystemOps::doCreateFolder(const ustring& path, std::string& msg, error_code& ec) {
    translated(msg, ec, [&] { Folder(CanonicalAbsoluteIRI(path), getStorageSystem()).createFolder(); });
}

void VirtualFileSystemOps::doCreateFolders(const ustring& path, std::string& msg, error_code& ec) {
    translated(msg, ec,
               [&] { Folder(CanonicalAbsoluteIRI(path), getStorageSystem()).createFolderRecursive(); });
}

void VirtualFileSystemOps::doCreateSymlink(const ustring& /*target*/, const ustring& /*link*/,
                                           std::string& msg, error_code& ec) {
    detail::reportRefusal(errc::operation_not_supported,
                          "Creation of symlinks is not supported by VirtualFileSystemOps", msg, ec);
}

void VirtualFileSystemOps::doCopy(const ustring& from, const ustring& to, ExistsMode mode, std::string& msg,
                                  error_code& ec) {
    translated(msg, ec, [&] {
        const Copying copying(mode == Replace ? ReplacementPolicy::ReplaceExisting
                                              : ReplacementPolicy::FailIfExists);
        boost::apply_visitor(copying, detail::resolveEntryPair(from, to, getStorageSystem()));
    });
}

void VirtualFileSystemOps::doRename(const ustring& from, const ustring& to, std::string& msg,
                                    error_code& ec) {
    translated(msg, ec, [&] {
        boost::apply_visitor(Moving(), detail::resolveEntryPair(from, to, getStorageSystem()));
    });
}

void VirtualFileSystemOps::doRemove(const ustring& path, std::string& msg, error_code& ec) {
    translated(msg, ec, [&] {
        boost::apply_visitor(Removing(FolderRemovalPolicy::OnlyIfEmpty),
                             detail::resolveEntry(path, getStorageSystem()));
    });
}

void VirtualFileSystemOps::doRemoveAll(const ustring& path, std::string& msg, error_code& ec) {
    translated(msg, ec, [&] {
        boost::apply_visitor(Removing(FolderRemovalPolicy::WithContents),
                             detail::resolveEntry(path, getStorageSystem()));
    });
}

}  // namespace opc
