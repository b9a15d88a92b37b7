#include <pkgcore/platform/storage/Exceptions.hpp>

namespace foundation::storage::vfs {

namespace {

const char* messageOf(ErrorCode code) noexcept {
    switch (code) {
        case ErrorCode::FolderNotEmpty:
            return "The folder is not empty";
        case ErrorCode::NoSuchStorage:
            return "No such storage";
        case ErrorCode::AccessDenied:
            return "Access denied";
        case ErrorCode::AlreadyExists:
            return "File or folder exists already";
        case ErrorCode::NotFound:
            return "File or folder not found";
        case ErrorCode::ReadOnlyStorage:
            return "The storage is read-only";
        case ErrorCode::FileTooLarge:
            return "The file is too large for the storage";
        case ErrorCode::TemporarilyBusy:
            return "The storage is busy";
        case ErrorCode::NoSpace:
            return "No space is left in the storage";
        case ErrorCode::IOError:
            return "The storage failed to read or write";
        case ErrorCode::NotRecoverable:
            return "The stored data is damaged";
        case ErrorCode::NotSupported:
            return "The storage does not support this operation";
    }
    return "The storage failed";
}

}  // namespace

Exception::Exception(ErrorCode code, const AbsoluteIRI& location)
    : Exception(code, messageOf(code), location) {}

}  // namespace foundation::storage::vfs
