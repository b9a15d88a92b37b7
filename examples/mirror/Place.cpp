#include "Place.hpp"

#include "../support/HostPath.hpp"

#include <filesystem>
#include <vector>

namespace mirror {

namespace {

/// `path` seen from the place. Step by step upwards, since IRIs are encoded and names are plain.
opc::ustring below(const Place& place, const opc::ustring& path) {
    opc::ustring relative = place.files.getFilename(path);
    opc::ustring folder = place.files.getParentPath(path);
    while (folder != place.root && !folder.empty()) {
        relative = place.files.getFilename(folder) + u'/' + relative;
        folder = place.files.getParentPath(folder);
    }
    return relative;
}

/// Absolute first: a relative path of which nothing exists would stay relative.
std::string resolved(const std::string& path) {
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path)).string();
}

/// One text for each folder of this machine, however it is named; the IRI for what is in any other store.
/// With a slash at the end, so that no name is taken for the beginning of another.
std::string location(const Place& place) {
    opc::ustring native;
    const bool isNative = place.files.getLocalPath(place.root, native);
    const std::string text = isNative ? resolved(hostFromPath(native)) : hostFromPath(place.root);
    return text.back() == '/' ? text : text + '/';
}

}  // namespace

Place placeFor(const opc::FileSystemOpsSelector& selector, const std::string& argument) {
    const opc::ustring given = pathFromHost(argument);
    opc::FileSystemOps& files = selector.getForPath(given);
    return {files, given, files.getParentPath(files.appendPath(given, u"any"))};
}

bool overlap(const Place& one, const Place& other) {
    const std::string left = location(one);
    const std::string right = location(other);
    return left.compare(0, right.size(), right) == 0 || right.compare(0, left.size(), left) == 0;
}

bool listInto(Listing& listing, const Place& place, std::string& reason) {
    std::vector<opc::ustring> paths;
    try {
        place.files.getFiles(place.root, paths, true);
    } catch (const opc::Exception& failure) {
        reason = failure.what();  // the paths hold what could be listed
    }
    for (const opc::ustring& path : paths) {
        listing.emplace(below(place, path), path);
    }
    return reason.empty();
}

}  // namespace mirror
