#pragma once

#include <pkgcore/core/Ustring.hpp>
#include <pkgcore/filesystem/NativeForm.hpp>
#include <pkgcore/platform/storage/AbsoluteIRI.hpp>
#include <pkgcore/platform/storage/NativePaths.hpp>

namespace opc::detail {

/// The scheme of IRIs that name items of the machine's own file system. Letter case counts.
inline constexpr char16_t kFileScheme[] = u"file";

/// The IRI of a native path, which need not be in tidied native form.
inline foundation::storage::vfs::AbsoluteIRI toFileIRI(const ustring& path) {
    return foundation::storage::vfs::toAbsoluteIRI(kFileScheme, nativeForm(path));
}

}  // namespace opc::detail
