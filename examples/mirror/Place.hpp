#pragma once

#include "Stores.hpp"

#include <pkgcore/pkgcore.hpp>

#include <optional>
#include <string>

namespace mirror {

/// A folder in any storage, and the back end that it is reached by.
struct Place {
    const Stores& stores;
    opc::FileSystemOps& files;
    opc::ustring given;  ///< as the user wrote it
    opc::ustring root;   ///< the spelling that getParentPath gives to everything in it
};

/// The place that an argument of the program names.
Place placeFor(const Stores& stores, const opc::ustring& argument);

/// Whether one is the other or lies in it. Links on the way to a native path count as what they lead to.
bool overlap(const Place& one, const Place& other);

/// The IRI of a place, with links on the way to a native path worked off.
opc::ustring iriOf(const Place& place);

/// Something in a place.
struct Item {
    const Place& place;
    opc::ustring path;

    opc::FileSystemOps& files() const { return place.files; }

    /// The same as a path of this machine; nothing for what is in another store. Only the back end of native
    /// paths knows links, pipes and all permissions.
    std::optional<opc::ustring> native() const;

    opc::FileSystemOps& nativeFiles() const { return place.stores.selector.getLocal(); }
};

/// Whether both are on this machine.
bool areNative(const Item& one, const Item& other);

}  // namespace mirror
