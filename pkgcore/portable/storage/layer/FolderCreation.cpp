#include <pkgcore/portable/storage/layer/FolderCreation.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>

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
    std::vector<Spot> missing;
    Spot spot = folder;
    while (!isFolder(spot)) {
        missing.push_back(spot);
        if (spot.path().isRoot()) {
            break;
        }
        spot = spot.parent();
    }
    for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
        createUnlessThere(*it);
    }
}

}  // namespace foundation::storage::portable
