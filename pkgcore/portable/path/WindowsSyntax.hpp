#pragma once

#include <string>

/// Paths as Windows writes them: "\" separates, "/" does so too wherever a path is taken. Pure functions;
/// they carry the contracts of pkgcore/platform/path/PathSyntax.hpp. Compiled and tested on every host. A NUL
/// passes through: whoever talks to the host refuses it.
///
/// A root is a drive (`C:\`), a share (`\\server\share`), a device (`\\?\C:\`, `\\?\UNC\server\share`,
/// `\\.\pipe`) or a lone separator. What opens a share or a device is never collapsed.
namespace fl::filesystem::syntax::windows {

/// Each "/" becomes "\", tidied or not.
std::u16string make_native_form(std::u16string path, bool tidy);

/// Each "\" becomes "/".
std::u16string make_generic_form(std::u16string nativePath);

std::u16string extract_extension(const std::u16string& nativePath);
std::u16string extract_filename(const std::u16string& nativePath);

/// The parent of `C:name` is `C:`, the current folder of that drive, which has no parent.
std::u16string extract_parent_path(const std::u16string& nativePath);

/// `C:` and `name` give `C:name`: a separator would make another folder of it.
std::u16string concatenate_pathname(const std::u16string& base, const std::u16string& rest, bool native);

/// `C:\`, a share and a device are absolute; `C:name` and `\name` are not: the current folder or drive has a
/// say in them.
bool is_absolute(const std::u16string& nativePath);

/// An absolute path behind `\\?\`, which lifts the length limit of the host's functions. That prefix also
/// stops the host from resolving "." and ".." and from reading "/", so both are done here, by the text alone,
/// as the host would have. Paths that are not absolute cannot be written so and stay as they are, as do paths
/// of devices.
std::wstring make_access_form(std::wstring widePath);

}  // namespace fl::filesystem::syntax::windows
