#include <pkgcore/portable/path/PosixSyntax.hpp>

#include <pkgcore/portable/path/PathElements.hpp>

#include <algorithm>

namespace fl::filesystem::syntax::posix {

namespace {

constexpr char16_t kSeparator = u'/';
constexpr std::u16string_view kSeparators = u"/";

/// All separators at the front belong to the root.
std::size_t rootLength(std::u16string_view path) {
    return std::min(path.find_first_not_of(kSeparators), path.size());
}

}  // namespace

std::u16string make_native_form(std::u16string path, bool tidy) {
    if (tidy) {
        collapseSeparators(path, 0, kSeparator);
        dropTrailingSeparators(path, rootLength(path), kSeparators);
    }
    return path;
}

std::u16string make_generic_form(std::u16string nativePath) { return nativePath; }

std::u16string extract_extension(const std::u16string& nativePath) {
    return std::u16string(extensionOfName(lastElement(nativePath, rootLength(nativePath), kSeparators)));
}

std::u16string extract_filename(const std::u16string& nativePath) {
    return std::u16string(lastElement(nativePath, rootLength(nativePath), kSeparators));
}

std::u16string extract_parent_path(const std::u16string& nativePath) {
    return std::u16string(withoutLastElement(nativePath, rootLength(nativePath), kSeparators));
}

std::u16string concatenate_pathname(const std::u16string& base, const std::u16string& rest, bool /*native*/) {
    return join(base, kSeparators, rest, kSeparators);
}

bool is_absolute(const std::u16string& nativePath) { return rootLength(nativePath) > 0; }

std::wstring make_access_form(std::wstring widePath) { return widePath; }

}  // namespace fl::filesystem::syntax::posix
