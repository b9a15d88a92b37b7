#pragma once

#include "Place.hpp"

#include <pkgcore/pkgcore.hpp>

#include <functional>
#include <map>
#include <string>

namespace mirror {

enum class Kind { File, Folder, Link, Other };

struct Listed {
    opc::ustring path;
    Kind kind;
};

/// Items by their names below the place, joined by "/": plain text, the same for every kind of storage. A
/// folder stands before what it holds.
using Listing = std::map<opc::ustring, Listed>;

/// Takes the reason why a folder could not be listed.
using OnFailure = std::function<void(const std::string& reason)>;

/// All that can be listed below a place. Links are not followed.
Listing list(const Place& place, const OnFailure& onFailure);

}  // namespace mirror
