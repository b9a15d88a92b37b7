#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>

#include <pkgcore/portable/storage/providers/sqlite/JournalFormat.hpp>

#include <sqlite3.h>

#include <cerrno>
#include <cstring>
#include <new>

namespace foundation::storage::sqlite {

using vfs::ErrorCode;

namespace {

/// Of a file that could not be opened, read or written. That it is missing, or that something is in its
/// place, is no news of what is in the store.
ErrorCode codeOfSystem(int error) noexcept {
    switch (error) {
        case EACCES:
        case EPERM:
            return ErrorCode::AccessDenied;
        case EROFS:
            return ErrorCode::ReadOnlyStorage;
        case EMFILE:
        case ENFILE:
            return ErrorCode::TemporarilyBusy;
        // The limit of the process or of the file system for the one file that the store is.
        case EFBIG:
        case ENOSPC:
        case EDQUOT:
            return ErrorCode::NoSpace;
        default:
            return ErrorCode::IOError;
    }
}

/// Of a store that could not be reached, or be given its name.
ErrorCode codeOfOpening(int error) noexcept {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
        case ENAMETOOLONG:
            return ErrorCode::NotFound;
        case EEXIST:
            return ErrorCode::AlreadyExists;
        default:
            return codeOfSystem(error);
    }
}

/// The journal of a process that has ended is to be brought in, which is a change.
bool isCutOff(int result) noexcept {
    return result == SQLITE_READONLY_ROLLBACK || result == SQLITE_READONLY_RECOVERY ||
           result == SQLITE_READONLY_CANTINIT;
}

ErrorCode codeOfReadOnly(int result) noexcept {
    if (isCutOff(result)) {
        return ErrorCode::IOError;
    }
    switch (result) {
        case SQLITE_READONLY_DIRECTORY:
            return ErrorCode::AccessDenied;
        case SQLITE_READONLY_DBMOVED:
            return ErrorCode::IOError;
        default:
            return ErrorCode::ReadOnlyStorage;
    }
}

/// A page of the store or its journal does not fit its seal.
bool isUnsealed(int result) noexcept { return result == SQLITE_IOERR_DATA || result == kDamagedJournal; }

std::string messageOf(sqlite3* connection, int result) {
    if (result == kDamagedJournal) {
        return "The stored data is damaged: the journal beside the file does not fit its checksums, "
               "or another program has made it";
    }
    if (isUnsealed(result)) {
        return "The stored data is damaged: a page of the file does not fit its checksum";
    }
    std::string message = isCutOff(result) ? "A change was cut off: open the store once for writing. " : "";
    message += "SQLite: ";
    message += sqlite3_errstr(result);
    const std::string detail = sqlite3_errmsg(connection);
    if (detail != sqlite3_errstr(result & 0xFF)) {
        message += " (" + detail + ')';
    }
    return message;
}

int lastErrorOf(sqlite3* connection, int whichFile) {
    sqlite3_file* file = nullptr;
    int error = 0;
    sqlite3_file_control(connection, "main", whichFile, &file);
    if (file != nullptr && file->pMethods != nullptr) {
        file->pMethods->xFileControl(file, SQLITE_FCNTL_LAST_ERRNO, &error);
    }
    return error;
}

/// Between a write that fails and its report, other calls have their turn, and the connection knows no more
/// than errno. The files remember.
int systemErrorOf(sqlite3* connection, int result) {
    if (result == SQLITE_IOERR_WRITE) {
        for (const int file : {SQLITE_FCNTL_FILE_POINTER, SQLITE_FCNTL_JOURNAL_POINTER}) {
            if (const int error = lastErrorOf(connection, file); error != 0) return error;
        }
    }
    return sqlite3_system_errno(connection);
}

void throwIfMemory(int result) {
    if ((result & 0xFF) == SQLITE_NOMEM || result == SQLITE_IOERR_NOMEM) {
        throw std::bad_alloc();
    }
}

}  // namespace

void fail(ErrorCode code) { throw vfs::Exception(code, vfs::AbsoluteIRI()); }

void fail(ErrorCode code, const std::string& message) { throw vfs::Exception(code, message); }

void failDamaged(const char* what) {
    fail(ErrorCode::NotRecoverable, std::string("The stored data is damaged: ") + what);
}

void failWithSystem(int error, const char* what) {
    fail(codeOfOpening(error), std::string(what) + ": " + std::strerror(error));
}

void failInUse(int error, const char* what) {
    fail(codeOfSystem(error), std::string(what) + ": " + std::strerror(error));
}

ErrorCode storageCode(int result, int systemError) noexcept {
    switch (result & 0xFF) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_PROTOCOL:
            return ErrorCode::TemporarilyBusy;
        case SQLITE_FULL:
            return ErrorCode::NoSpace;
        case SQLITE_TOOBIG:
            return ErrorCode::FileTooLarge;
        case SQLITE_READONLY:
            return codeOfReadOnly(result);
        case SQLITE_PERM:
        case SQLITE_AUTH:
            return ErrorCode::AccessDenied;
        case SQLITE_CANTOPEN:
        case SQLITE_IOERR:
            return isUnsealed(result) ? ErrorCode::NotRecoverable : codeOfSystem(systemError);
        // The statements are fixed and the schema was checked: what does not fit them is damage.
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
        case SQLITE_CONSTRAINT:
        case SQLITE_MISMATCH:
        case SQLITE_ERROR:
            return ErrorCode::NotRecoverable;
        default:
            return ErrorCode::IOError;
    }
}

void failWith(sqlite3* connection, int result) {
    throwIfMemory(result);
    fail(storageCode(result, systemErrorOf(connection, result)), messageOf(connection, result));
}

void failToOpen(sqlite3* connection, int result) {
    throwIfMemory(result);
    const int error = sqlite3_system_errno(connection);
    const bool isOpening = (result & 0xFF) == SQLITE_CANTOPEN;
    fail(isOpening ? codeOfOpening(error) : storageCode(result, error), messageOf(connection, result));
}

}  // namespace foundation::storage::sqlite
