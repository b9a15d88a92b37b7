#pragma once

#include <pkgcore/platform/Export.hpp>

#include <string>

namespace foundation::storage::vfs {

/// Whether a text begins with the scheme of a storage system, in any letter case, followed by "://" (RFC
/// 3986, 3.1). The rest of the text is not looked at. Never throws.
PKGCORE_PLATFORM_API bool hasIRIPrefix(const std::u16string& path) noexcept;

}  // namespace foundation::storage::vfs
