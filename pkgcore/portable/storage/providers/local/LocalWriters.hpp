#pragma once

#include <pkgcore/portable/storage/Provider.hpp>

#include <memory>
#include <string>

/// Writing files of the host.
namespace foundation::storage::portable {

/// Writes under a temporary name beside the file and renames it into place on the first commit. The file
/// keeps its permission bits. What is written after that goes to the end of the published file.
std::unique_ptr<provider::Writer> replaceLocalFile(const std::u16string& path, bool mayReplace);

/// Adds to the end of a file in place: of a regular one, of a pipe or of a device. What is discarded is cut
/// off again where the host can.
std::unique_ptr<provider::Writer> appendToLocalFile(const std::u16string& path);

}  // namespace foundation::storage::portable
