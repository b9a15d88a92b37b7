#include <pkgcore/platform/storage/Existence.hpp>

#include <pkgcore/portable/storage/layer/StorageSystem.hpp>

#include <utility>

namespace foundation::storage::vfs {

// NOLINTNEXTLINE(performance-unnecessary-value-param): a handle goes by value throughout this interface
ExistenceType exists(CanonicalAbsoluteIRI location, StorageSystemReference storage) {
    const std::optional<provider::Item> found = storage.get()->find(std::move(location)).find();
    if (!found) {
        return ExistenceType::Nothing;
    }
    return found->kind == provider::Kind::File ? ExistenceType::File : ExistenceType::Folder;
}

}  // namespace foundation::storage::vfs
