#pragma once

#include <pkgcore/platform/Export.hpp>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace fl::filesystem {

/// The root of everything that the file-system library throws on a failure of the file system.
///
/// what() is an English text without any path; the path concerned travels beside it and may be empty. Copying
/// never throws, so that the exception can be rethrown and caught by value while memory is short.
class PKGCORE_PLATFORM_API FsysExceptionBase : public std::runtime_error {
public:
    /// `pathName` is the path concerned, `furtherPaths` others that took part (the destination of a copy).
    FsysExceptionBase(const std::string& text, std::u16string pathName,
                      std::vector<std::u16string> furtherPaths)
        : std::runtime_error(text),
          paths_(std::make_shared<const Paths>(Paths{std::move(pathName), std::move(furtherPaths)})) {}

    /// The path concerned, or an empty string where there is none.
    const std::u16string& get_path_name() const noexcept { return paths_->name; }

    /// The other paths that took part; usually none.
    const std::vector<std::u16string>& get_further_paths() const noexcept { return paths_->further; }

private:
    struct Paths {
        std::u16string name;
        std::vector<std::u16string> further;
    };
    std::shared_ptr<const Paths> paths_;
};

/// Permission refused (POSIX EACCES, EPERM).
class PKGCORE_PLATFORM_API AccessDenied : public FsysExceptionBase {
public:
    using FsysExceptionBase::FsysExceptionBase;
    /// With the text that belongs to the type.
    explicit AccessDenied(std::u16string pathName)
        : FsysExceptionBase("Access denied", std::move(pathName), {}) {}
};

/// Nothing is at the path (ENOENT).
class PKGCORE_PLATFORM_API PathNotFound : public FsysExceptionBase {
public:
    using FsysExceptionBase::FsysExceptionBase;
    /// With the text that belongs to the type.
    explicit PathNotFound(std::u16string pathName)
        : FsysExceptionBase("Path not found", std::move(pathName), {}) {}
};

/// Something is at the path already (EEXIST).
class PKGCORE_PLATFORM_API FileExistsError : public FsysExceptionBase {
public:
    using FsysExceptionBase::FsysExceptionBase;
    /// With the text that belongs to the type.
    explicit FileExistsError(std::u16string pathName)
        : FsysExceptionBase("File exists", std::move(pathName), {}) {}
};

/// A name or a path is longer than the file system takes (ENAMETOOLONG).
class PKGCORE_PLATFORM_API FileNameTooLarge : public FsysExceptionBase {
public:
    using FsysExceptionBase::FsysExceptionBase;
    /// With the text that belongs to the type.
    explicit FileNameTooLarge(std::u16string pathName)
        : FsysExceptionBase("File name too long", std::move(pathName), {}) {}
};

/// A folder was needed and something else is there (ENOTDIR).
class PKGCORE_PLATFORM_API NotDirectoryError : public FsysExceptionBase {
public:
    using FsysExceptionBase::FsysExceptionBase;
    /// With the text that belongs to the type.
    explicit NotDirectoryError(std::u16string pathName)
        : FsysExceptionBase("Not a directory", std::move(pathName), {}) {}
};

/// A folder that must be empty is not (ENOTEMPTY).
class PKGCORE_PLATFORM_API DirectoryNotEmpty : public FsysExceptionBase {
public:
    using FsysExceptionBase::FsysExceptionBase;
    /// With the text that belongs to the type.
    explicit DirectoryNotEmpty(std::u16string pathName)
        : FsysExceptionBase("Directory not empty", std::move(pathName), {}) {}
};

/// A file was needed and a folder is there (EISDIR).
class PKGCORE_PLATFORM_API FileIsDirectory : public FsysExceptionBase {
public:
    using FsysExceptionBase::FsysExceptionBase;
    /// With the text that belongs to the type.
    explicit FileIsDirectory(std::u16string pathName)
        : FsysExceptionBase("File is a directory", std::move(pathName), {}) {}
};

/// The host or the kind of item does not know the operation (ENOTSUP, ENOSYS).
class PKGCORE_PLATFORM_API InvalidOperation : public FsysExceptionBase {
public:
    using FsysExceptionBase::FsysExceptionBase;
    /// With the text that belongs to the type.
    explicit InvalidOperation(std::u16string pathName)
        : FsysExceptionBase("Invalid operation", std::move(pathName), {}) {}
};

/// An argument that no file system could carry out (EINVAL, ELOOP).
class PKGCORE_PLATFORM_API InvalidArgument : public FsysExceptionBase {
public:
    using FsysExceptionBase::FsysExceptionBase;
    /// With the text that belongs to the type.
    explicit InvalidArgument(std::u16string pathName)
        : FsysExceptionBase("Invalid argument", std::move(pathName), {}) {}
};

/// A path that has no form in the host's encoding of names: an unpaired surrogate, or a NUL (EILSEQ).
class PKGCORE_PLATFORM_API FileNameConversionFailure : public FsysExceptionBase {
public:
    using FsysExceptionBase::FsysExceptionBase;
    /// With the text that belongs to the type.
    explicit FileNameConversionFailure(std::u16string pathName)
        : FsysExceptionBase("File name cannot be converted", std::move(pathName), {}) {}
};

/// Any other failure of the host, with its own number and text.
class PKGCORE_PLATFORM_API SystemError : public FsysExceptionBase {
public:
    /// `text` is the host's own for `errorCode`.
    SystemError(const std::string& text, int errorCode, std::u16string pathName)
        : FsysExceptionBase(text, std::move(pathName), {}), errorCode_(errorCode) {}

    /// The host's error number (errno on POSIX).
    int get_error_code() const noexcept { return errorCode_; }

private:
    int errorCode_;
};

namespace detail {

/// Throws InvalidOperation: an entry of a listing that has ended was asked for.
[[noreturn]] PKGCORE_PLATFORM_API void throw_invalid_operation_exception();

}  // namespace detail
}  // namespace fl::filesystem
