#include <pkgcore/platform/storage/IRIPrefix.hpp>

#include <pkgcore/portable/storage/iri/SchemeRegistry.hpp>

namespace foundation::storage::vfs {

bool hasIRIPrefix(const std::u16string& path) noexcept { return portable::registeredPrefix(path) != 0; }

}  // namespace foundation::storage::vfs
