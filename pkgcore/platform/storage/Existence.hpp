#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>

namespace foundation::storage::vfs {

/// What is at a place.
enum class ExistenceType : unsigned {
    File = 0,
    Folder = 1,
    Nothing = 2,
};

/// What is at a place now. A missing folder above it, or a file in the middle of the path, is an answer:
/// Nothing. A look-up that fails is an Exception and never Nothing. UnsupportedIRISchemeException where the
/// scheme is not mounted in the system, NoSuchStorage where only the authority is not.
PKGCORE_PLATFORM_API ExistenceType exists(CanonicalAbsoluteIRI location, StorageSystemReference storage);

}  // namespace foundation::storage::vfs
