#pragma once

#include <pkgcore/portable/storage/layer/Spot.hpp>

/// Content that goes through the storage system, since its store cannot do it alone or there are two of them.
/// A block at a time: no file is in memory as a whole.
namespace foundation::storage::portable {

/// Adds all that is left in a reader.
void pour(const Spot& from, provider::Reader& reader, const Spot& to, provider::Writer& writer);

/// Publishes the content of one file as that of another one.
void copyContent(const Spot& from, const Spot& to, provider::WriteMode mode);

/// Whether two files hold the same bytes now.
bool haveSameContent(const Spot& one, const Spot& other);

}  // namespace foundation::storage::portable
