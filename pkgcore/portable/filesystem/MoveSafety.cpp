#include <pkgcore/portable/filesystem/MoveSafety.hpp>

#include <cerrno>

namespace fl::filesystem::posix {

Disk::Disk(int folder) noexcept : folder_(openAt(folder, ".", O_RDONLY | O_DIRECTORY)), error_(errno) {}

int Disk::sync() const noexcept {
    if (folder_.isOpen()) {
        return errorOf([&] { return systemCalls().syncfs(folder_.get()); });
    }
    if (error_ != EACCES) {
        return error_;
    }
    systemCalls().sync();  // a folder that may be written but not read
    return 0;
}

int changeSince(const struct stat& before, Item item) noexcept {
    struct stat now;
    if (const int error = readStatus(item, now); error != 0) {
        return error;
    }
    if (!isSameItem(now, before)) {
        return ESTALE;
    }
    const bool isUnwritten = now.st_size == before.st_size && now.st_mtim.tv_sec == before.st_mtim.tv_sec &&
                             now.st_mtim.tv_nsec == before.st_mtim.tv_nsec;
    return isUnwritten || !S_ISREG(now.st_mode) ? 0 : EBUSY;
}

}  // namespace fl::filesystem::posix
