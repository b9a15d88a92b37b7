#include "Place.hpp"

#include "../support/HostPath.hpp"

#include <filesystem>

namespace mirror {

namespace {

/// Absolute first: a relative path of which nothing exists would stay relative.
std::string resolved(const std::string& path) {
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path)).string();
}

/// One text for each folder of this machine, however it is named; the IRI for what is in any other store.
/// With a slash at the end, so that no name is taken for the beginning of another.
std::string location(const Place& place) {
    const std::optional<opc::ustring> native = Item{place, place.root}.native();
    const std::string text = native ? resolved(hostFromPath(*native)) : hostFromPath(place.root);
    return text.back() == '/' ? text : text + '/';
}

}  // namespace

Place placeFor(const Stores& stores, const opc::ustring& argument) {
    opc::FileSystemOps& files = stores.selector.getForPath(argument);
    return {stores, files, argument, files.getParentPath(files.appendPath(argument, u"any"))};
}

bool overlap(const Place& one, const Place& other) {
    const std::string left = location(one);
    const std::string right = location(other);
    return left.compare(0, right.size(), right) == 0 || right.compare(0, left.size(), left) == 0;
}

opc::ustring iriOf(const Place& place) {
    const std::optional<opc::ustring> native = Item{place, place.root}.native();
    return native ? place.stores.selector.getVirtual().normalizePath(
                        pathFromHost(resolved(hostFromPath(*native))))
                  : place.root;
}

std::optional<opc::ustring> Item::native() const {
    opc::ustring local;
    return files().getLocalPath(path, local) ? std::optional(local) : std::nullopt;
}

bool areNative(const Item& one, const Item& other) {
    return one.native().has_value() && other.native().has_value();
}

}  // namespace mirror
