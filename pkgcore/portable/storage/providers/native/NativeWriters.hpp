#pragma once

#include <pkgcore/portable/storage/Provider.hpp>
#include <pkgcore/portable/storage/providers/native/HeldItem.hpp>

#include <memory>

/// Writing files of the host. A link in the file's place is not followed.
namespace foundation::storage::portable {

/// Writes under a temporary name beside the file and renames it into place on the first commit. The file
/// keeps its permission bits. What is written after that goes to the end of the published file.
std::unique_ptr<provider::Writer> replaceFile(HeldItem file, bool mayReplace);

/// Adds to the end of a file in place: of a regular one, of a pipe or of a device. What is discarded is cut
/// off again where the host can.
std::unique_ptr<provider::Writer> appendToFile(HeldItem file);

}  // namespace foundation::storage::portable
