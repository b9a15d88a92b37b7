#pragma once

#include <pkgcore/portable/storage/Provider.hpp>

#include <memory>

namespace foundation::storage::provider {

/// The files of this machine as a store, from the root of its file system down. A link counts as what it
/// leads to, but what removes, moves or replaces it means the link itself. A pipe or a device counts as a
/// file, whose bytes come and go at once.
std::shared_ptr<Provider> makeLocalProvider();

}  // namespace foundation::storage::provider
