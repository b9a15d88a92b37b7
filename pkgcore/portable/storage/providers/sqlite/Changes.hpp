#pragma once

#include <pkgcore/platform/storage/Policies.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Draft.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Store.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

/// The verbs of a store that change names and marks, each in one transaction; see Provider.hpp.
namespace foundation::storage::sqlite {

void createFolder(Store& store, const provider::Path& folder);
void removeEntry(Store& store, const provider::Path& path);
void removeTree(Store& store, const provider::Path& folder);
void moveEntry(Store& store, const provider::Path& from, const provider::Path& to,
               provider::ReplacementPolicy policy);
void setWritable(Store& store, const provider::Path& path, bool isWritable);
void setLastModified(Store& store, const provider::Path& path, const boost::posix_time::ptime& time);

/// Where something of a kind may be put; throws where that is not so.
Place placeFor(Entries& entries, const provider::Path& to, provider::Kind kind,
               provider::ReplacementPolicy policy);

/// Where a writer publishes.
Place placeForWriting(Entries& entries, const provider::Path& file, bool mayReplace);

provider::Item itemOf(const Entry& entry);

}  // namespace foundation::storage::sqlite
