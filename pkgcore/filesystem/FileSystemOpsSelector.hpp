#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/core/Ustring.hpp>
#include <pkgcore/filesystem/FileSystemOps.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>

#include <memory>

namespace opc {

/// Hands out the back end that fits a path: the local one for native paths, the virtual one for IRIs.
///
/// A cheap handle. Copies share the same two back ends, and a reference to one is good as long as any of
/// these handles lives; copies may be made and dropped on different threads. A selector that was moved from
/// has nothing to hand out: destroy it or assign to it. What a selector supports is settled when it is made.
class PKGCORE_API FileSystemOpsSelector {
public:
    /// For native paths only.
    FileSystemOpsSelector();

    /// For native paths, and for IRIs of `storage`, which is kept alive as long as any of these handles.
    explicit FileSystemOpsSelector(const foundation::storage::vfs::StorageSystemReference& storage);

    /// A copy shares the back ends; assigning lets go of those that this handle had.
    /// @{
    FileSystemOpsSelector(const FileSystemOpsSelector& other);
    FileSystemOpsSelector(FileSystemOpsSelector&& other) noexcept;
    FileSystemOpsSelector& operator=(const FileSystemOpsSelector& other);
    FileSystemOpsSelector& operator=(FileSystemOpsSelector&& other) noexcept;
    ~FileSystemOpsSelector();
    /// @}

    /// The virtual back end for a path that begins with the scheme of a storage system and "://", else the
    /// local one. Nothing else about the path counts. Throws as getVirtual does.
    FileSystemOps& getForPath(const ustring& path) const;

    /// The back end for native paths; never fails.
    FileSystemOps& getLocal() const;

    /// The same object as getLocal().
    FileSystemOps& getPhysical() const;

    /// The back end for IRIs. A selector without one throws opc::Exception with a cleared code.
    FileSystemOps& getVirtual() const;

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace opc
