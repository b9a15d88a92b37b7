#include "tests/support/scripted_platform/StorageScript.hpp"

#include "tests/support/scripted_platform/Platform.hpp"

#include <memory>

namespace scripted {

namespace vfs = foundation::storage::vfs;

namespace {

template <typename Item>
Verbatim showItem(const Item& item) {
    const vfs::StorageSystem* const system = item.getStorageSystem().get();
    return {show(item.getLocation().toString()) + "@" + (system == nullptr ? "" : system->name)};
}

}  // namespace

vfs::StorageSystemReference storageSystem(const std::string& name) {
    auto system = std::make_shared<vfs::StorageSystem>();
    system->name = name;
    return vfs::StorageSystemReference(system);
}

Verbatim showPlace(const vfs::File& file) { return showItem(file); }
Verbatim showPlace(const vfs::Folder& folder) { return showItem(folder); }

StoredEntry storedFile(const std::u16string& location) { return {location, false}; }
StoredEntry storedFolder(const std::u16string& location) { return {location, true}; }

}  // namespace scripted
