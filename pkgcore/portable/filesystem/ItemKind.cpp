#include <pkgcore/portable/filesystem/ItemKind.hpp>

#include <pkgcore/platform/filesystem/FileStatus.hpp>

#include <dirent.h>
#include <sys/stat.h>

namespace fl::filesystem::posix {

unsigned kindOfType(unsigned char type) noexcept {
    switch (type) {
        case DT_REG:
            return file_status::regular_file;
        case DT_DIR:
            return file_status::directory_file;
        case DT_LNK:
            return file_status::symlink_file;
        case DT_BLK:
            return file_status::block_file;
        case DT_CHR:
            return file_status::character_file;
        case DT_FIFO:
            return file_status::fifo_file;
        case DT_SOCK:
            return file_status::socket_file;
        default:
            return file_status::unknown_file;
    }
}

unsigned kindOfMode(mode_t mode) noexcept { return kindOfType(IFTODT(mode)); }

}  // namespace fl::filesystem::posix
