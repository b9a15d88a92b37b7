#include <pkgcore/portable/storage/providers/local/LocalSibling.hpp>

#include <pkgcore/portable/filesystem/RandomName.hpp>

namespace foundation::storage::portable {

std::u16string localSibling(const std::u16string& path) {
    std::u16string sibling = path.substr(0, path.rfind(u'/') + 1) + u'.';
    fl::filesystem::posix::appendRandomName(sibling);
    return sibling + u".tmp";
}

}  // namespace foundation::storage::portable
