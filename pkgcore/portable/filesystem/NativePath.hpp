#pragma once

#include <pkgcore/portable/filesystem/FileDescriptor.hpp>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace fl::filesystem::posix {

/// A path that is given without the separator of the root; empty for the root itself.
struct BelowRoot {
    const std::u16string& path;
};

/// A path as the bytes that the system takes: NUL-terminated, without trailing separators (so that a link is
/// itself and not what it points to), in the object itself unless it is long.
class NativePath {
public:
    /// FileNameConversionFailure for a NUL or a text without a form in bytes; PathNotFound for an empty path.
    explicit NativePath(const std::u16string& path);
    explicit NativePath(BelowRoot place);
    NativePath(const NativePath&) = delete;
    NativePath& operator=(const NativePath&) = delete;

    char* bytes() noexcept { return longBytes_ ? longBytes_.get() : shortBytes_; }
    const char* bytes() const noexcept { return longBytes_ ? longBytes_.get() : shortBytes_; }
    std::size_t size() const noexcept { return size_; }

    /// The path as it was given, for messages; refers to the constructor's argument.
    const std::u16string& text() const noexcept { return text_; }

private:
    NativePath(std::string_view start, const std::u16string& rest);

    static constexpr std::size_t kShortCapacity = 1024;

    const std::u16string& text_;
    std::size_t size_;
    std::unique_ptr<char[]> longBytes_;
    char shortBytes_[kShortCapacity];  // left uninitialised: only what is written is read
};

/// Where an item is, in the form that the `*at` calls take: a folder and a path relative to it that is short
/// enough for one call. A path longer than the system's limit is walked in pieces, holding one open folder.
class Place {
public:
    /// Of a path as it is. Walking a long one can fail: see error().
    /// @{
    explicit Place(const std::u16string& path);
    explicit Place(BelowRoot place);
    /// @}
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    /// 0, or the error number with which walking a long path ended.
    int error() const noexcept { return error_; }

    /// Throws the exception for error() unless that is 0; returns this place.
    const Place& orThrow() const;

    /// A descriptor, or AT_FDCWD.
    int directory() const noexcept { return directory_; }
    const char* path() const noexcept { return rest_; }
    const std::u16string& text() const noexcept { return path_.text(); }

    /// Whether the last element is "." or "..": such an item can be neither removed nor renamed.
    bool endsInDots() const noexcept;

private:
    void walkIfLong();
    void walk();

    NativePath path_;
    const char* rest_;
    FileDescriptor folder_;
    int directory_;
    int error_ = 0;
};

}  // namespace fl::filesystem::posix
