#pragma once

#include <pkgcore/portable/filesystem/FileDescriptor.hpp>

#include <ios>
#include <string>

namespace fl::filesystem::posix {

/// Opens a file for a stream, with the meaning that the C++ standard gives the mode flags (table of
/// basic_filebuf::open); `ate` is left to the caller. Holds none, with nothing created, where the mode makes
/// no sense, the path has no form in bytes, the host refuses, or a folder is there. A new file gets 0666 less
/// the umask.
FileDescriptor openFile(const std::wstring& path, std::ios_base::openmode mode);

}  // namespace fl::filesystem::posix
