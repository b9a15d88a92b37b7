#include <pkgcore/filesystem/PathHelpers.hpp>

#include <pkgcore/filesystem/NativeForm.hpp>
#include <pkgcore/platform/path/PathSyntax.hpp>

namespace opc::detail {

namespace syntax = fl::filesystem::detail;

ustring getExtension(const ustring& path) { return syntax::extract_extension(nativeForm(path)); }

ustring getFilename(const ustring& path) { return syntax::extract_filename(nativeForm(path)); }

ustring getParentPath(const ustring& path) {
    const ustring parent = syntax::extract_parent_path(nativeForm(path));
    // Once more: a piece of a native path need not be in tidied native form itself.
    return syntax::make_generic_form(nativeForm(parent));
}

ustring normalizePath(const ustring& path) { return syntax::make_generic_form(nativeForm(path)); }

std::wstring makeNativePath(const ustring& path) {
    return syntax::make_access_form(syntax::to_filesystem(nativeForm(path)));
}

}  // namespace opc::detail
