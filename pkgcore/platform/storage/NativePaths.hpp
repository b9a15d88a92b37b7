#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/storage/AbsoluteIRI.hpp>

#include <string>

/// @file
/// Between IRIs and native paths, which are plain text in the native form of the host.
namespace foundation::storage::vfs {

/// The IRI with this scheme and this path. A leading "//" or "\\" of the path is the mark of an authority:
/// "mem" and "\\store/a" give "mem://store/a". Without the mark the authority is empty; a root is added where
/// the path has none, so that "file" and "a/b" give "file:///a/b", as "/a/b" does. Throws as AbsoluteIRI.
PKGCORE_PLATFORM_API AbsoluteIRI toAbsoluteIRI(const std::u16string& scheme, const std::u16string& path);

/// The native path of an IRI with the scheme "file". UnsupportedIRISchemeException for any other scheme,
/// InvalidIRIException for a place that has no native path: one with an authority on a host without such
/// paths.
PKGCORE_PLATFORM_API std::u16string fromAbsoluteIRI(const AbsoluteIRI& iri);

}  // namespace foundation::storage::vfs
