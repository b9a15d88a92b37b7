#include <pkgcore/portable/filesystem/Errors.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include <cerrno>
#include <cstring>
#include <string>

namespace fl::filesystem {

void detail::throw_invalid_operation_exception() {
    throw InvalidOperation("The listing has ended", std::u16string(), {});
}

namespace posix {

namespace {

/// The standard library's text would follow the locale of the process.
std::string englishText(int error) {
    const char* const text = ::strerrordesc_np(error);
    return text != nullptr ? text : "Unknown error " + std::to_string(error);
}

}  // namespace

// ENOTSUP and EOPNOTSUPP are one number on Linux and two elsewhere; EPERM also stands for an item made
// immutable.
void throwError(int error, const std::u16string& path) {
    switch (error) {
        case EACCES:
        case EPERM:
            throw AccessDenied(path);
        case ENOENT:
            throw PathNotFound(path);
        case EEXIST:
            throw FileExistsError(path);
        case ENAMETOOLONG:
            throw FileNameTooLarge(path);
        case ENOTDIR:
            throw NotDirectoryError(path);
        case ENOTEMPTY:
            throw DirectoryNotEmpty(path);
        case EISDIR:
            throw FileIsDirectory(path);
        case ENOTSUP:
        case ENOSYS:
            throw InvalidOperation(path);
        case EINVAL:
        case ELOOP:
            throw InvalidArgument(path);
        case EILSEQ:
            throw FileNameConversionFailure(path);
        default:
            throw SystemError(englishText(error), error, path);
    }
}

}  // namespace posix
}  // namespace fl::filesystem
