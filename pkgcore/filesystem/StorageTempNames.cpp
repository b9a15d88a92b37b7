#include <pkgcore/filesystem/StorageTempNames.hpp>

#include <pkgcore/filesystem/FileIRI.hpp>
#include <pkgcore/filesystem/NativeForm.hpp>
#include <pkgcore/platform/filesystem/Temporary.hpp>
#include <pkgcore/platform/path/PathSyntax.hpp>
#include <pkgcore/platform/storage/AbsoluteIRI.hpp>
#include <pkgcore/platform/storage/NativePaths.hpp>
#include <pkgcore/util/TempNames.hpp>

namespace opc::detail {

using foundation::storage::vfs::AbsoluteIRI;

namespace {

ustring baseIRI(const ustring& folder) {
    return folder.empty() ? toFileIRI(util::getTempDir()).toString() : AbsoluteIRI(folder).toString();
}

}  // namespace

StorageTempNames::StorageTempNames(const ustring& folder) {
    const AbsoluteIRI base(baseIRI(folder));
    scheme_ = base.getScheme();
    // The slash of the root goes; toAbsoluteIRI puts one there again. A path without any is
    // std::out_of_range.
    path_ = base.getPath().substr(scheme_ == kFileScheme ? 1 : 0);
}

ustring StorageTempNames::draw() const {
    const ustring name = nativeForm(fl::filesystem::tmpnam(path_, u".", u".tmp"));
    const ustring generic = fl::filesystem::detail::make_generic_form(name);
    // Elsewhere the path begins with an authority, and this is its mark.
    const ustring marked = scheme_ == kFileScheme ? generic : u"\\\\" + generic;
    return foundation::storage::vfs::toAbsoluteIRI(scheme_, nativeForm(marked)).toString();
}

}  // namespace opc::detail
