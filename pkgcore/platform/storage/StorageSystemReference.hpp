#pragma once

#include <pkgcore/platform/Export.hpp>

#include <memory>
#include <utility>

namespace foundation::storage::vfs {

/// What is mounted where; known to the platform alone.
class StorageSystem;

/// A handle to an immutable virtual storage system: cheap to copy, shared by count, usable from any thread.
/// The system lives as long as any handle to it.
class PKGCORE_PLATFORM_API StorageSystemReference {
public:
    /// Shares in a system that the platform has made.
    explicit StorageSystemReference(std::shared_ptr<const StorageSystem> system)
        : system_(std::move(system)) {}

    /// The system; null only in a handle that was moved from.
    const StorageSystem* get() const noexcept { return system_.get(); }

private:
    std::shared_ptr<const StorageSystem> system_;
};

}  // namespace foundation::storage::vfs
