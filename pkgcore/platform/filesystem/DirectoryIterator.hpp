#pragma once

#include <pkgcore/platform/Export.hpp>
#include <pkgcore/platform/filesystem/FileStatus.hpp>

#include <memory>
#include <string>
#include <string_view>

namespace fl::filesystem {

namespace upath_constant {
inline constexpr std::u16string_view CURRENT_DIRECTORY = u".";  ///< the folder itself
inline constexpr std::u16string_view PARENT_DIRECTORY = u"..";  ///< the folder that holds it
}  // namespace upath_constant

namespace detail {

/// One entry of a listing, valid until the listing moves on.
class PKGCORE_PLATFORM_API upath_directory_entry {
public:
    /// The kind as the listing itself tells it: a link is a link. Permissions and time are not filled in (0
    /// and not_a_date_time), since they would cost a call of the system per entry; ask symlink_status for
    /// them.
    file_status status() const;

    /// The name alone.
    std::u16string_view filename() const noexcept;

    /// The path of the listed folder, a separator and the name.
    const std::u16string& full_pathname() const noexcept { return fullPathname_; }

private:
    friend class upath_directory_iterator_impl;

    std::u16string fullPathname_;
    std::size_t nameOffset_ = 0;
    unsigned kind_ = file_status::file_not_found;
};

/// How a listing is opened; there is one way.
enum class initialization_mode : unsigned { standard = 0 };

/// Walks the direct entries of a folder once, each shown once, in the order in which the host delivers them.
///
/// Stands on the first entry after construction. Belongs to the thread that made it. Listings may be nested
/// to any depth: all together hold few descriptors, and one that waits for another to end holds its entry
/// alone. An entry that goes away while the folder is listed may or may not be shown.
/// Where it is the very folder that a listing within was opened for, the others are those that the file
/// system finds behind its place.
class PKGCORE_PLATFORM_API upath_directory_iterator_impl {
public:
    /// Opens a folder given in native form. A link to a folder is followed. Anything else is
    /// NotDirectoryError, a missing one PathNotFound.
    upath_directory_iterator_impl(const std::u16string& nativeFolder, initialization_mode mode);
    ~upath_directory_iterator_impl();
    upath_directory_iterator_impl(const upath_directory_iterator_impl&) = delete;
    upath_directory_iterator_impl& operator=(const upath_directory_iterator_impl&) = delete;

    /// False once the listing has ended.
    bool is_open() const noexcept;

    /// Moves to the next entry or to the end.
    void increment();

    /// The entry that the listing stands on; throw_invalid_operation_exception() at the end.
    const upath_directory_entry& operator*() const;

private:
    class Source;
    upath_directory_entry entry_;  // before the source, which looks at its path
    std::unique_ptr<Source> source_;
};

}  // namespace detail
}  // namespace fl::filesystem
