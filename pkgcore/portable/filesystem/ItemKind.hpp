#pragma once

#include <sys/types.h>

namespace fl::filesystem::posix {

/// The kind (file_status::regular_file ...) for one of the DT_ constants of a folder's records; DT_UNKNOWN is
/// unknown_file.
unsigned kindOfType(unsigned char type) noexcept;

/// The same for the mode of a status record.
unsigned kindOfMode(mode_t mode) noexcept;

}  // namespace fl::filesystem::posix
