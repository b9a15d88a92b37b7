#pragma once

namespace foundation::storage::vfs {

/// Why a storage system could not do what it was asked. The values are part of the interface; further ones
/// may come.
enum class ErrorCode : unsigned {
    FolderNotEmpty = 0,
    NoSuchStorage = 1,    ///< nothing is mounted for the authority, or the store is not to be reached
    AccessDenied = 2,     ///< a right is missing, or the item itself is read-only
    AlreadyExists = 3,    ///< something is there that is not to be replaced, or must not be
    NotFound = 4,         ///< nothing is there, or a folder above is missing
    ReadOnlyStorage = 5,  ///< the whole store is read-only
    FileTooLarge = 6,     ///< larger than the store can keep
    TemporarilyBusy = 7,  ///< the same may succeed later
    NoSpace = 8,
    IOError = 9,          ///< the store could not read or write, or cannot tell
    NotRecoverable = 10,  ///< what is stored is damaged
    NotSupported = 11,    ///< the store cannot do this, or nobody can: a folder into itself, a root removed
};

}  // namespace foundation::storage::vfs
