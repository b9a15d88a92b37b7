#pragma once

#include "Place.hpp"

namespace mirror {

/// Gives a copy the permissions of its original: all nine bits between files of this machine, and whether it
/// may be written where one of the two is in another store. Throws if that fails; a store that has no
/// permissions is no failure.
void copyPermissions(const Item& original, const Item& copy);

/// A store that keeps no times, or coarser ones, is no failure: what tells then is the content.
void setTime(const Item& item, const boost::posix_time::ptime& time);

/// Lets the owner write into a folder, if that can be done.
void openUp(const Item& folder);

}  // namespace mirror
