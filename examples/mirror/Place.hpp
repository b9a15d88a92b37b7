#pragma once

#include <pkgcore/pkgcore.hpp>

#include <map>
#include <string>

namespace mirror {

/// A folder in any storage, and the back end that it is reached by.
struct Place {
    opc::FileSystemOps& files;
    opc::ustring given;  ///< as the user wrote it
    opc::ustring root;   ///< the spelling that getParentPath gives to everything in it
};

/// The place that an argument of the program names. Throws if that is no IRI although it begins as one.
Place placeFor(const opc::FileSystemOpsSelector& selector, const std::string& argument);

/// Whether one is the other or lies in it. Links on the way to a native path count as what they lead to.
bool overlap(const Place& one, const Place& other);

/// Files and links by their names below the place, joined by "/": plain text, the same for every kind of
/// storage.
using Listing = std::map<opc::ustring, opc::ustring>;

/// Adds all that can be listed; false, with the reason, if something cannot.
bool listInto(Listing& listing, const Place& place, std::string& reason);

}  // namespace mirror
