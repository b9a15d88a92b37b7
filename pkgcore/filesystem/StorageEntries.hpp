#pragma once

#include <pkgcore/core/Ustring.hpp>
#include <pkgcore/platform/storage/FileOrFolder.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>

#include <boost/variant.hpp>

/// Items of a storage system by the text of their IRIs. Whatever is wrong with an IRI, and failures to look
/// it up, leave as the storage library throws them; where nothing is, that is its Exception with the code
/// NotFound.
namespace opc::detail {

/// What is at the path.
foundation::storage::vfs::FileOrFolder resolveEntry(const ustring& path,
                                                    foundation::storage::vfs::StorageSystemReference storage);

/// The folder at the path. A file there counts as nothing.
foundation::storage::vfs::Folder resolveFolder(const ustring& path,
                                               foundation::storage::vfs::StorageSystemReference storage);

/// Where something is copied or moved from and to.
template <typename Item>
struct SourceAndDestination {
    Item source;
    Item destination;
};

using EntryPair = boost::variant<SourceAndDestination<foundation::storage::vfs::File>,
                                 SourceAndDestination<foundation::storage::vfs::Folder>>;

/// What is at `from`, and a place of the same kind at `to`, which is not looked up: what is there is left to
/// the storage system and the policy that it is given.
EntryPair resolveEntryPair(const ustring& from, const ustring& to,
                           const foundation::storage::vfs::StorageSystemReference& storage);

}  // namespace opc::detail
