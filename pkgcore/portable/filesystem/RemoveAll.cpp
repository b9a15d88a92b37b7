#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
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
    posix::removeTree(posix::itemAt(place), path);
}

}  // namespace fl::filesystem
