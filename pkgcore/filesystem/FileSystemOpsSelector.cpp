#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/filesystem/LocalFileSystemOps.hpp>
#include <pkgcore/filesystem/VirtualFileSystemOps.hpp>
#include <pkgcore/platform/storage/IRIPrefix.hpp>

namespace opc {

/// The owners of the back ends. In this order: the virtual one goes first when the last handle does.
struct FileSystemOpsSelector::Impl {
    Impl() = default;
    explicit Impl(const foundation::storage::vfs::StorageSystemReference& storage)
        : virtualOps(std::make_unique<VirtualFileSystemOps>(storage)) {}

    std::unique_ptr<FileSystemOps> localOps = std::make_unique<LocalFileSystemOps>();
    std::unique_ptr<FileSystemOps> virtualOps;
};

FileSystemOpsSelector::FileSystemOpsSelector() : impl_(std::make_shared<Impl>()) {}

FileSystemOpsSelector::FileSystemOpsSelector(const foundation::storage::vfs::StorageSystemReference& storage)
    : impl_(std::make_shared<Impl>(storage)) {}

FileSystemOpsSelector::FileSystemOpsSelector(const FileSystemOpsSelector& other) = default;
FileSystemOpsSelector::FileSystemOpsSelector(FileSystemOpsSelector&& other) noexcept = default;
FileSystemOpsSelector& FileSystemOpsSelector::operator=(const FileSystemOpsSelector& other) = default;
FileSystemOpsSelector& FileSystemOpsSelector::operator=(FileSystemOpsSelector&& other) noexcept = default;
FileSystemOpsSelector::~FileSystemOpsSelector() = default;

FileSystemOps& FileSystemOpsSelector::getForPath(const ustring& path) const {
    return foundation::storage::vfs::hasIRIPrefix(path) ? getVirtual() : getLocal();
}

FileSystemOps& FileSystemOpsSelector::getLocal() const { return *impl_->localOps; }

FileSystemOps& FileSystemOpsSelector::getPhysical() const { return getLocal(); }

FileSystemOps& FileSystemOpsSelector::getVirtual() const {
    if (!impl_->virtualOps) {
        throw Exception(
            "Virtual file system operations are not supported. A StorageSystemReference was not provided.",
            boost::system::error_code());
    }
    return *impl_->virtualOps;
}

}  // namespace opc
