#pragma once

#include <pkgcore/platform/Export.hpp>

namespace fl::i18n {

/// Makes the library ready for use. Any thread may call it, any number of times; a call that finds it done
/// costs next to nothing. std::runtime_error where the library's data cannot be had; the next call tries
/// again.
PKGCORE_PLATFORM_API void initialize();

}  // namespace fl::i18n
