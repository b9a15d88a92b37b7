#include <pkgcore/portable/storage/providers/native/NativeErrors.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>

#include <cerrno>

namespace foundation::storage::portable {

namespace fs = fl::filesystem;

using vfs::ErrorCode;

namespace {

ErrorCode codeOfNumber(int error) noexcept {
    switch (error) {
        case EROFS:
            return ErrorCode::ReadOnlyStorage;
        case EFBIG:
        case EOVERFLOW:
            return ErrorCode::FileTooLarge;
        case ENOSPC:
        case EDQUOT:
            return ErrorCode::NoSpace;
        case EAGAIN:
        case EBUSY:
        case ETXTBSY:
        case EMFILE:
        case ENFILE:
            return ErrorCode::TemporarilyBusy;
        case ENODEV:
        case ENXIO:
        case EHOSTDOWN:
            return ErrorCode::NoSuchStorage;
        default:
            return ErrorCode::IOError;
    }
}

[[noreturn]] void fail(ErrorCode code) { throw vfs::Exception(code, vfs::AbsoluteIRI()); }

[[noreturn]] void fail(ErrorCode code, const std::exception& failure) {
    throw vfs::Exception(code, failure.what());
}

}  // namespace

// The codes that say all keep their own message, the others that of the host.
void rethrowAsStorageFailure(Purpose purpose) {
    const ErrorCode inTheWay = purpose == Purpose::Reading ? ErrorCode::NotFound : ErrorCode::AlreadyExists;
    try {
        throw;
    } catch (const fs::PathNotFound&) {
        fail(ErrorCode::NotFound);
    } catch (const fs::FileExistsError&) {
        fail(ErrorCode::AlreadyExists);
    } catch (const fs::NotDirectoryError&) {
        fail(inTheWay);
    } catch (const fs::FileIsDirectory&) {
        fail(inTheWay);
    } catch (const fs::DirectoryNotEmpty&) {
        fail(ErrorCode::FolderNotEmpty);
    } catch (const fs::AccessDenied&) {
        fail(ErrorCode::AccessDenied);
    } catch (const fs::SystemError& failure) {
        fail(codeOfNumber(failure.get_error_code()), failure);
    } catch (const fs::FsysExceptionBase& failure) {
        fail(ErrorCode::NotSupported, failure);
    }
}

}  // namespace foundation::storage::portable
