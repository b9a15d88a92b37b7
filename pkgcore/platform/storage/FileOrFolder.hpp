#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/storage/File.hpp>
#include <pkgcore/platform/storage/Folder.hpp>

#include <boost/date_time/posix_time/ptime.hpp>
#include <boost/variant.hpp>

namespace foundation::storage::vfs {

/// An entry of a storage system. The order of the alternatives is part of the interface.
using FileOrFolder = boost::variant<File, Folder>;

/// Whether the entry may be written. A store without read-only entries answers true. Fails as the operations
/// of File and Folder do.
PKGCORE_PLATFORM_API bool isWritable(const FileOrFolder& entry);

/// The time of the last change of the content, in UTC with microseconds; not_a_date_time for a folder where
/// the store keeps no times of folders. Fails as the operations of File and Folder do.
PKGCORE_PLATFORM_API boost::posix_time::ptime getLastModified(const FileOrFolder& entry);

}  // namespace foundation::storage::vfs
