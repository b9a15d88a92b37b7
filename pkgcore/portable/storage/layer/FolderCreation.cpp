#include <pkgcore/portable/storage/layer/FolderCreation.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>

#include <string>
#include <vector>

namespace foundation::storage::portable {

using provider::Kind;
using vfs::ErrorCode;

namespace {

/// Whether a folder is there; AlreadyExists for a file.
bool isFolder(const Spot& spot) {
    const std::optional<provider::Item> found = spot.find();
    if (found && found->kind == Kind::File) {
        spot.fail(ErrorCode::AlreadyExists);
    }
    return found.has_value();
}

void createUnlessThere(const Spot& folder) {
    try {
        folder.createFolder();
    } catch (const vfs::Exception& failure) {
        if (failure.getErrorCode() != ErrorCode::AlreadyExists || !isFolder(folder)) {
            throw;
        }
    }
}

}  // namespace

void createFolders(const Spot& folder) {
    std::vector<std::u16string> missing;  // names alone: paths would need memory by the square of the depth
    Spot spot = folder;
    while (!isFolder(spot)) {
        if (spot.path().isRoot()) {
            createUnlessThere(spot);
            break;
        }
        missing.emplace_back(spot.path().name());
        spot = spot.parent();
    }
    for (auto name = missing.rbegin(); name != missing.rend(); ++name) {
        spot = spot.child(*name);
        createUnlessThere(spot);
    }
}

}  // namespace foundation::storage::portable
