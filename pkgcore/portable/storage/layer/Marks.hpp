#pragma once

#include <pkgcore/portable/storage/layer/Spot.hpp>

namespace foundation::storage::portable {

/// Marks a file or folder as writable or not; where it is so already, a store need not know how.
void setWritable(const Spot& spot, provider::Kind kind, bool isWritable);

/// Sets the time of a file or folder; not_a_date_time asks for nothing.
void setLastModified(const Spot& spot, provider::Kind kind, const boost::posix_time::ptime& time);

}  // namespace foundation::storage::portable
