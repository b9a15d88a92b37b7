#pragma once

#include <pkgcore/platform/Export.hpp>

#include <locale>

namespace fl::i18n::facet {

/// The locale of the process that new standard streams take.
PKGCORE_PLATFORM_API std::locale get_global_std_locale();

}  // namespace fl::i18n::facet
