#include <pkgcore/portable/storage/providers/native/HeldItem.hpp>

#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/NativePath.hpp>

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

}  // namespace foundation::storage::portable
