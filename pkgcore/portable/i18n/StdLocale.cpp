#include <pkgcore/platform/i18n/StdLocale.hpp>

namespace fl::i18n::facet {

std::locale get_global_std_locale() { return std::locale(); }

}  // namespace fl::i18n::facet
