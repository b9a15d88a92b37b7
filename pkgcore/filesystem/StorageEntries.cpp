#include <pkgcore/filesystem/StorageEntries.hpp>

#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/Existence.hpp>

#include <utility>

namespace opc::detail {

using foundation::storage::vfs::CanonicalAbsoluteIRI;
using foundation::storage::vfs::ErrorCode;
using foundation::storage::vfs::ExistenceType;
using foundation::storage::vfs::File;
using foundation::storage::vfs::FileOrFolder;
using foundation::storage::vfs::Folder;
using foundation::storage::vfs::StorageSystemReference;

namespace {

[[noreturn]] void throwNotFound(const CanonicalAbsoluteIRI& location) {
    throw foundation::storage::vfs::Exception(ErrorCode::NotFound, location);
}

bool isFolderAt(const CanonicalAbsoluteIRI& location, const StorageSystemReference& storage) {
    const ExistenceType existence = exists(location, storage);
    if (existence == ExistenceType::Nothing) {
        throwNotFound(location);
    }
    return existence == ExistenceType::Folder;
}

template <typename Item>
SourceAndDestination<Item> pairOf(CanonicalAbsoluteIRI source, CanonicalAbsoluteIRI destination,
                                  const StorageSystemReference& storage) {
    return {Item(std::move(source), storage), Item(std::move(destination), storage)};
}

}  // namespace

FileOrFolder resolveEntry(const ustring& path, StorageSystemReference storage) {
    CanonicalAbsoluteIRI location(path);
    if (isFolderAt(location, storage)) {
        return Folder(std::move(location), std::move(storage));
    }
    return File(std::move(location), std::move(storage));
}

Folder resolveFolder(const ustring& path, StorageSystemReference storage) {
    CanonicalAbsoluteIRI location(path);
    if (exists(location, storage) != ExistenceType::Folder) {
        throwNotFound(location);
    }
    return Folder(std::move(location), std::move(storage));
}

EntryPair resolveEntryPair(const ustring& from, const ustring& to, const StorageSystemReference& storage) {
    CanonicalAbsoluteIRI source(from);
    CanonicalAbsoluteIRI destination(to);
    if (isFolderAt(source, storage)) {
        return pairOf<Folder>(std::move(source), std::move(destination), storage);
    }
    return pairOf<File>(std::move(source), std::move(destination), storage);
}

}  // namespace opc::detail
