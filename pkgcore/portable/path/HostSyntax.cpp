// The part of the native syntax that is the same on every host.

#include <pkgcore/platform/path/PathSyntax.hpp>

#include <pkgcore/platform/i18n/Conversion.hpp>

namespace fl::filesystem::detail {

std::wstring to_filesystem(const std::u16string& nativePath) { return i18n::to_wstring(nativePath); }

std::wstring make_native_access_form_with_cleanup(const std::u16string& path) {
    return make_access_form(to_filesystem(make_native_form(path, true)));
}

}  // namespace fl::filesystem::detail
