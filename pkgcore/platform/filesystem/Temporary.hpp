#pragma once

#include <pkgcore/platform/Export.hpp>

#include <cstdio>
#include <string>

/// @file
/// Temporary places and names, and the working directory. Failures are exceptions derived from
/// FsysExceptionBase.
namespace fl::filesystem {

/// The absolute path of the system's folder for temporary items, or an empty string where none is known: on
/// POSIX hosts what TMPDIR, TMP, TEMP or TEMPDIR says, the first that names a folder by an absolute path,
/// else /tmp. Relative values are passed over, since what they name changes with the working directory.
PKGCORE_PLATFORM_API std::u16string temp_directory_name();

/// The working directory of the process.
PKGCORE_PLATFORM_API std::u16string get_current_path();

/// `directory`, a separator, `prefix`, random characters, `extension`: a name that nobody else is likely to
/// draw. The disk is not looked at.
PKGCORE_PLATFORM_API std::u16string tmpnam(const std::u16string& directory, const std::u16string& prefix,
                                           const std::u16string& extension);

/// Creates an empty file under a fresh name of the form of tmpnam, exclusively, which its owner and nobody
/// else may read and write whatever the mask of the process, writes that name to `name` and returns the open
/// file for reading and writing, which the caller closes with fclose. Null where the file could be created
/// but no stream for it; then nothing is left on the disk.
PKGCORE_PLATFORM_API std::FILE* tmpfile(std::u16string& name, const std::u16string& directory,
                                        const std::u16string& prefix, const std::u16string& extension);

}  // namespace fl::filesystem
