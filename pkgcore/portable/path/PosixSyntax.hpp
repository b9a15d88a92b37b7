#pragma once

#include <string>

/// Paths as POSIX writes them (POSIX.1-2017, 4.13): "/" separates and stands for the root; every other
/// character but NUL may be part of a name, a backslash and a colon included. Pure functions; they carry the
/// contracts of pkgcore/platform/path/PathSyntax.hpp. A NUL passes through: whoever talks to the host refuses
/// it.
///
/// Two leading slashes are taken as one. POSIX leaves their meaning to the host, and the hosts that this
/// syntax serves give them none.
namespace fl::filesystem::syntax::posix {

std::u16string make_native_form(std::u16string path, bool tidy);
std::u16string make_generic_form(std::u16string nativePath);
std::u16string extract_extension(const std::u16string& nativePath);
std::u16string extract_filename(const std::u16string& nativePath);
std::u16string extract_parent_path(const std::u16string& nativePath);

/// The native and the generic separator are the same here.
std::u16string concatenate_pathname(const std::u16string& base, const std::u16string& rest, bool native);

bool is_absolute(const std::u16string& nativePath);

/// The path as it is: the length limit of one call is no matter of notation here.
std::wstring make_access_form(std::wstring widePath);

}  // namespace fl::filesystem::syntax::posix
