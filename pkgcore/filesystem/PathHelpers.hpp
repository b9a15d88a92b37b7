#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/core/Ustring.hpp>

#include <string>

/// @file
/// Pieces and forms of native paths, by their text alone: the disk is not asked. Each takes a path in native
/// or generic notation, tidied or not; an empty path gives an empty result. They fail for want of memory
/// only, unless the platform's path library has failures of its own, which pass unchanged.
///
/// getExtension and getFilename give their piece as the native form spells it, getParentPath and
/// normalizePath give the generic form: on a host where the two differ, do not compare results of the one
/// pair with those of the other.
namespace opc::detail {

/// The text after the last "." of the last name, without the dot.
PKGCORE_API ustring getExtension(const ustring& path);

/// The last name; empty for a root.
PKGCORE_API ustring getFilename(const ustring& path);

/// What holds the last name, in generic notation; empty for a root and for a single relative name.
PKGCORE_API ustring getParentPath(const ustring& path);

/// The whole path, tidied, in generic notation. "." and ".." stay: dropping a ".." is wrong behind a link.
PKGCORE_API ustring normalizePath(const ustring& path);

/// The path as the host's own wide file functions take it at any length.
PKGCORE_API std::wstring makeNativePath(const ustring& path);

}  // namespace opc::detail
