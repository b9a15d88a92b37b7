#include <pkgcore/portable/storage/providers/native/HeldItem.hpp>

#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/NativePath.hpp>
#include <pkgcore/portable/filesystem/RandomName.hpp>
#include <pkgcore/portable/filesystem/TreeRemoval.hpp>

#include <exception>

namespace foundation::storage::portable {

namespace posix = fl::filesystem::posix;

HeldItem heldItem(const std::u16string& path) {
    const std::size_t separator = path.rfind(u'/');
    const std::u16string folder = path.substr(0, separator == 0 ? 1 : separator);
    const std::u16string name = path.substr(separator + 1);
    const posix::Place place(folder);
    HeldItem held;
    held.folder = posix::openAt(place.orThrow().directory(), place.path(), O_PATH | O_DIRECTORY);
    if (!held.folder.isOpen()) {
        posix::throwError(errno, path);
    }
    if (!name.empty()) {
        held.name = posix::NativePath(name).bytes();
    }
    return held;
}

// Nothing of the item's own name: that may be as long as a name can be.
std::string temporaryName() {
    std::u16string name = u".";
    posix::appendRandomName(name);
    name += u".tmp";
    return std::string(name.begin(), name.end());
}

HeldSibling::~HeldSibling() {
    if (!isMade_) {
        return;
    }
    try {
        posix::removeTree(item(), std::u16string());
    } catch (const std::exception&) {
        // The failure that brought us here is on its way; that something is left behind is the lesser news.
    }
}

}  // namespace foundation::storage::portable
