#pragma once

#include <pkgcore/core/Export.hpp>
#include <pkgcore/core/Ustring.hpp>

namespace opc::util {

/// The system's folder for temporary items in generic notation; the working directory where the system names
/// none. A failure of the file system is an opc::Exception with its text and a cleared code.
PKGCORE_API ustring getTempDir();

/// A path in `directory` at which nothing was when it was looked at: prefix, random characters, extension.
/// Empty arguments stand for getTempDir(), "." and ".tmp"; an extension is taken as it is, without a dot of
/// its own if it has none. Nothing is created: another process can take the name before the caller does
/// (TempfileGuard and TempdirGuard create at once).
///
/// Draws names until one is free. Failures of the file system leave as the platform library threw them, those
/// of getTempDir() as opc::Exception.
PKGCORE_API ustring getTempName(const ustring& directory, const ustring& prefix, const ustring& extension);

}  // namespace opc::util
