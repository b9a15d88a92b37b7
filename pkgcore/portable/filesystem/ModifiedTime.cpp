#include <pkgcore/portable/filesystem/ModifiedTime.hpp>

namespace fl::filesystem::posix {

namespace {

/// 0 or the error number.
int writeTime(Item item, const timespec& time) noexcept {
    const timespec times[2] = {{0, UTIME_OMIT}, time};  // access, modification
    return errorOf(
        [&] { return systemCalls().utimensat(item.folder, item.name, times, AT_SYMLINK_NOFOLLOW); });
}

/// Whether `kept` is `asked` in the coarser steps of a file system: of up to a second, or the two seconds of
/// FAT. The end of a file system's span of time, at which other times are kept, is no such step.
bool isRoundedDown(const timespec& kept, const timespec& asked) noexcept {
    if (kept.tv_sec == asked.tv_sec) {
        return kept.tv_nsec <= asked.tv_nsec;
    }
    return kept.tv_sec == asked.tv_sec - 1 && kept.tv_sec % 2 == 0 && kept.tv_nsec == 0;
}

}  // namespace

// Linux clamps a time that the file system cannot hold and says nothing; only reading it back tells.
int setModifiedTime(Item item, const timespec& time) noexcept {
    struct stat before;
    struct stat after;
    int error = readStatus(item, before);
    if (error == 0) {
        error = writeTime(item, time);
    }
    if (error == 0) {
        error = readStatus(item, after);
    }
    if (error == 0 && !isRoundedDown(after.st_mtim, time)) {
        // A failure here changes nothing about what is told: the time that was asked for could not be kept.
        writeTime(item, before.st_mtim);
        error = EINVAL;
    }
    return error;
}

}  // namespace fl::filesystem::posix
