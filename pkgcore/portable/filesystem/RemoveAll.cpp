#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/ParentFolder.hpp>
#include <pkgcore/portable/filesystem/TreeRemoval.hpp>

#include <string_view>

namespace fl::filesystem {

using posix::Place;

namespace {

bool isRoot(const Place& place) { return std::string_view(place.path()) == "/"; }

}  // namespace

// The root cannot be removed in any case; refused here, it is not emptied first.
void remove_all(const std::u16string& path) {
    const Place place(path);
    if (place.orThrow().endsInDots() || isRoot(place)) {
        throw InvalidArgument(path);
    }
    // Held open, so that a folder on the way that is swapped meanwhile does not lead the removal elsewhere.
    const posix::ParentFolder parent(place);
    posix::removeTree(parent.item(), path);
}

}  // namespace fl::filesystem
