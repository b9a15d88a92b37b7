#pragma once

#include <pkgcore/platform/Export.hpp>

#include <string>

/// @file
/// The syntax of native paths. Nothing here looks at the disk. None of these functions is called with an
/// empty path by the library, but each gives an empty result for one.
///
/// The native form is written as the host writes paths; the generic form separates with "/" everywhere.
namespace fl::filesystem::detail {

/// The host's notation of a path given in native or generic form. With `tidy`, repeated separators collapse
/// to one and a trailing separator goes unless it is that of a root; "." and ".." stay, since dropping a ".."
/// is wrong behind a link.
PKGCORE_PLATFORM_API std::u16string make_native_form(std::u16string path, bool tidy);

/// The generic notation of a native path.
PKGCORE_PLATFORM_API std::u16string make_generic_form(std::u16string nativePath);

/// The text after the last "." of the last element, without the dot: "gz" of "a.tar.gz", "profile" of
/// ".profile", empty for "name.", for a name without a dot, and for "." and "..".
PKGCORE_PLATFORM_API std::u16string extract_extension(const std::u16string& nativePath);

/// The last element; empty for a root.
PKGCORE_PLATFORM_API std::u16string extract_filename(const std::u16string& nativePath);

/// The path of what holds the last element; empty for a root and for a single relative element.
PKGCORE_PLATFORM_API std::u16string extract_parent_path(const std::u16string& nativePath);

/// `base`, one separator and `rest`: all separators at the joint count as that one, so an absolute `rest`
/// never replaces the base, and a `rest` of nothing but separators adds nothing. With an empty base the
/// result is `rest`. `native` asks for the host's separator (else "/").
PKGCORE_PLATFORM_API std::u16string concatenate_pathname(const std::u16string& base,
                                                         const std::u16string& rest, bool native);

/// Whether the path starts at a root, so that the working directory has no say in it.
PKGCORE_PLATFORM_API bool is_absolute(const std::u16string& nativePath);

/// The same path in wide characters (UTF-16 or UTF-32 by their size); an unpaired surrogate and a NUL pass
/// unchanged.
PKGCORE_PLATFORM_API std::wstring to_filesystem(const std::u16string& nativePath);

/// The notation that the host's file functions take for any length of path.
PKGCORE_PLATFORM_API std::wstring make_access_form(std::wstring widePath);

/// make_native_form with tidying, to_filesystem and make_access_form in one; empty for an empty path.
PKGCORE_PLATFORM_API std::wstring make_native_access_form_with_cleanup(const std::u16string& path);

}  // namespace fl::filesystem::detail
