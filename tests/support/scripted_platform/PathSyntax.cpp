#include <pkgcore/platform/path/PathSyntax.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

namespace fl::filesystem::detail {

using scripted::Platform;
using Text = std::u16string;

namespace {

Text tagged(const Text& tag, const Text& text) { return tag + u"(" + text + u")"; }
std::wstring tagged(const std::wstring& tag, const std::wstring& text) { return tag + L"(" + text + L")"; }

std::wstring wide(const Text& text) { return std::wstring(text.begin(), text.end()); }

}  // namespace

Text make_native_form(Text path, bool tidy) {
    Platform::current().record("make_native_form", path, tidy);
    return Platform::current().make_native_form.next(path, [&] { return tagged(u"native", path); });
}

Text make_generic_form(Text nativePath) {
    Platform::current().record("make_generic_form", nativePath);
    return Platform::current().make_generic_form.next(nativePath,
                                                      [&] { return tagged(u"generic", nativePath); });
}

Text extract_extension(const Text& nativePath) {
    Platform::current().record("extract_extension", nativePath);
    return Platform::current().extract_extension.next(nativePath,
                                                      [&] { return tagged(u"extension", nativePath); });
}

Text extract_filename(const Text& nativePath) {
    Platform::current().record("extract_filename", nativePath);
    return Platform::current().extract_filename.next(nativePath,
                                                     [&] { return tagged(u"filename", nativePath); });
}

Text extract_parent_path(const Text& nativePath) {
    Platform::current().record("extract_parent_path", nativePath);
    return Platform::current().extract_parent_path.next(nativePath,
                                                        [&] { return tagged(u"parent", nativePath); });
}

Text concatenate_pathname(const Text& base, const Text& rest, bool native) {
    Platform::current().record("concatenate_pathname", base, rest, native);
    return Platform::current().concatenate_pathname.next(base,
                                                         [&] { return tagged(u"join", base + u"+" + rest); });
}

bool is_absolute(const Text& nativePath) {
    Platform::current().record("is_absolute", nativePath);
    return Platform::current().is_absolute.next(nativePath, [] { return false; });
}

std::wstring to_filesystem(const Text& nativePath) {
    Platform::current().record("to_filesystem", nativePath);
    return Platform::current().to_filesystem.next(nativePath,
                                                  [&] { return tagged(L"wide", wide(nativePath)); });
}

std::wstring make_access_form(std::wstring widePath) {
    Platform::current().record("make_access_form", widePath);
    return Platform::current().make_access_form.next(Text(widePath.begin(), widePath.end()),
                                                     [&] { return tagged(L"access", widePath); });
}

std::wstring make_native_access_form_with_cleanup(const Text& path) {
    Platform::current().record("make_native_access_form_with_cleanup", path);
    return Platform::current().make_native_access_form_with_cleanup.next(
        path, [&] { return tagged(L"cleanAccess", wide(path)); });
}

}  // namespace fl::filesystem::detail
