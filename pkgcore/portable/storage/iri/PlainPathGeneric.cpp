#include <pkgcore/portable/storage/iri/PlainPath.hpp>

namespace foundation::storage::portable {

bool isPlainPath(std::u16string_view path) noexcept {
    return !path.empty() && path[0] == u'/' && arePlainUnits(path.substr(1));
}

}  // namespace foundation::storage::portable
