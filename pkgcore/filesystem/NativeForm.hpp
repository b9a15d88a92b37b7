#pragma once

#include <pkgcore/core/Ustring.hpp>
#include <pkgcore/platform/path/PathSyntax.hpp>

namespace opc::detail {

/// The tidied native form of a path; an empty path stays empty and is never shown to the path library.
inline ustring nativeForm(const ustring& path) {
    return path.empty() ? ustring() : fl::filesystem::detail::make_native_form(path, true);
}

}  // namespace opc::detail
