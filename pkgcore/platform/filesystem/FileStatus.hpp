#pragma once

#include <pkgcore/platform/Export.hpp>

#include <boost/date_time/posix_time/ptime.hpp>

namespace fl::filesystem {

/// What a file system says about one item: its kind, its permission and attribute bits, its last-write time.
struct PKGCORE_PLATFORM_API file_status {
    static constexpr unsigned file_not_found = 0;  ///< nothing is there
    static constexpr unsigned regular_file = 1;    ///< S_IFREG
    static constexpr unsigned directory_file = 2;  ///< S_IFDIR
    static constexpr unsigned symlink_file = 3;    ///< S_IFLNK
    static constexpr unsigned block_file = 4;      ///< S_IFBLK
    static constexpr unsigned character_file = 5;  ///< S_IFCHR
    static constexpr unsigned fifo_file = 6;       ///< S_IFIFO
    static constexpr unsigned socket_file = 7;     ///< S_IFSOCK
    static constexpr unsigned unknown_file = 8;    ///< something is there, of a kind without a name here

    /// All bits of POSIX `chmod`: owner, group and others, set-uid, set-gid and the sticky bit.
    static constexpr unsigned perms_all = 07777;
    /// A flag for permissions(): act on a link itself and not on what it points to.
    static constexpr unsigned perms_symlink = 0x0001'0000;
    /// Attributes of hosts that have them beside the permissions; a POSIX host reports none.
    /// @{
    static constexpr unsigned hidden_file = 0x0002'0000;
    static constexpr unsigned system_file = 0x0004'0000;
    static constexpr unsigned archive_file = 0x0008'0000;
    static constexpr unsigned non_indexed_file = 0x0010'0000;
    /// @}

    unsigned kind = file_not_found;  ///< one of the kinds above
    unsigned permissions = 0;        ///< bits of perms_all, and attributes
    /// UTC with microseconds; not_a_date_time where it was not asked for or nothing is there.
    boost::posix_time::ptime lastWriteTime{boost::posix_time::not_a_date_time};

    /// What `status` says about the kind.
    /// @{
    static bool exists(const file_status& status) noexcept { return status.kind != file_not_found; }
    static bool is_regular(const file_status& status) noexcept { return status.kind == regular_file; }
    static bool is_directory(const file_status& status) noexcept { return status.kind == directory_file; }
    static bool is_symlink(const file_status& status) noexcept { return status.kind == symlink_file; }
    /// @}
};

}  // namespace fl::filesystem
