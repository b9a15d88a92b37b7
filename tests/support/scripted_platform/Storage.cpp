#include <pkgcore/platform/storage/IRIPrefix.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

namespace foundation::storage::vfs {

bool hasIRIPrefix(const std::u16string& path) noexcept {
    scripted::Platform& platform = scripted::Platform::current();
    platform.record("hasIRIPrefix", path);
    return platform.hasIRIPrefix.next(path, [] { return false; });
}

}  // namespace foundation::storage::vfs
