// The native syntax is that of the host.

#include <pkgcore/platform/path/PathSyntax.hpp>

#include <pkgcore/platform/i18n/Conversion.hpp>
#include <pkgcore/portable/path/HostSyntax.hpp>

#include <utility>

namespace fl::filesystem::detail {

std::u16string make_native_form(std::u16string path, bool tidy) {
    return host::make_native_form(std::move(path), tidy);
}

std::u16string make_generic_form(std::u16string nativePath) {
    return host::make_generic_form(std::move(nativePath));
}

std::u16string extract_extension(const std::u16string& nativePath) {
    return host::extract_extension(nativePath);
}

std::u16string extract_filename(const std::u16string& nativePath) {
    return host::extract_filename(nativePath);
}

std::u16string extract_parent_path(const std::u16string& nativePath) {
    return host::extract_parent_path(nativePath);
}

std::u16string concatenate_pathname(const std::u16string& base, const std::u16string& rest, bool native) {
    return host::concatenate_pathname(base, rest, native);
}

bool is_absolute(const std::u16string& nativePath) { return host::is_absolute(nativePath); }

std::wstring make_access_form(std::wstring widePath) { return host::make_access_form(std::move(widePath)); }

std::wstring to_filesystem(const std::u16string& nativePath) { return i18n::to_wstring(nativePath); }

std::wstring make_native_access_form_with_cleanup(const std::u16string& path) {
    return make_access_form(to_filesystem(make_native_form(path, true)));
}

}  // namespace fl::filesystem::detail
