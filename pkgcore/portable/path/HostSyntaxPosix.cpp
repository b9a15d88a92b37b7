// The syntax of POSIX hosts as the native one. CMake compiles this file or its Windows sibling.

#include <pkgcore/platform/path/PathSyntax.hpp>

#include <pkgcore/portable/path/PosixSyntax.hpp>

#include <utility>

namespace fl::filesystem::detail {

namespace host = syntax::posix;

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

}  // namespace fl::filesystem::detail
