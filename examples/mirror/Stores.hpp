#pragma once

#include <pkgcore/pkgcore.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>

#include <vector>

namespace mirror {

/// What is mounted, and the back ends over it.
struct Stores {
    foundation::storage::vfs::StorageSystemReference system;
    opc::FileSystemOpsSelector selector;
};

/// The stores that places name: one for each authority of each scheme that the program knows. Throws
/// std::invalid_argument for a text that is no IRI although it begins as one.
Stores openStores(const std::vector<opc::ustring>& places);

}  // namespace mirror
