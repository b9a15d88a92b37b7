#include <pkgcore/portable/filesystem/FileCopy.hpp>

namespace fl::filesystem::posix {

namespace {

/// A file that is created exclusively and removed again unless it is completed.
class NewFile {
public:
    NewFile(Item item, mode_t bits) noexcept
        : item_(item), file_(openAt(item.folder, item.name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, bits)) {
        exists_ = file_.isOpen();
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile() {
        if (exists_) {
            unlinkItem(item_, 0);
        }
    }

    bool isOpen() const noexcept { return file_.isOpen(); }
    int get() const noexcept { return file_.get(); }

    /// Closes the file, which stays: 0, or the error number, and then it goes.
    int complete() noexcept {
        const int error = file_.close();
        exists_ = error != 0;
        return error;
    }

private:
    Item item_;
    FileDescriptor file_;
    bool exists_ = false;
};

/// Sees to it that a file created with `wanted` has all of these bits: the process's umask or an access list
/// of the folder may have taken some.
int settleBits(int file, mode_t wanted, CreationBits& known) {
    // Deliberately not looked at again: umask and access lists work bit by bit, so what one file was granted
    // the next one in the same folder is too, and a look at each would cost a call per file. Should somebody
    // change the rule during the copy, bits are missing at worst; none is ever added.
    if ((wanted & ~known.granted) == 0) {
        return 0;
    }
    if ((wanted & known.taken) == 0) {
        struct stat status;
        if (const int error = readStatus(file, status); error != 0) {
            return error;
        }
        known.granted |= wanted & status.st_mode;
        known.taken |= wanted & ~status.st_mode;
    }
    if ((wanted & known.taken) == 0) {
        return 0;
    }
    return errorOf([&] { return systemCalls().fchmod(file, wanted); });
}

// Without O_NONBLOCK a pipe that was put in the file's place would keep the copy waiting for a writer.
FileDescriptor openSource(Item item) {
    return openAt(item.folder, item.name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
}

}  // namespace

int refusalToCopy(const struct stat& status) noexcept {
    if (S_ISREG(status.st_mode)) {
        return 0;
    }
    return S_ISDIR(status.st_mode) ? EISDIR : ENOTSUP;
}

int carryTimes(const struct stat& status, int to) noexcept {
    const timespec times[2] = {status.st_atim, status.st_mtim};
    return errorOf([&] { return systemCalls().futimens(to, times); });
}

Outcome FileCopy::copyNew(Item from, Item to, CreationBits& known) {
    const FileDescriptor source = openSource(from);
    if (!source.isOpen()) {
        return atSource(errno == ELOOP ? ENOTSUP : errno);  // ELOOP: by now it is a link
    }
    struct stat status;
    int error = readStatus(source.get(), status);
    if (error == 0) {
        error = refusalToCopy(status);
    }
    if (error != 0) {
        return atSource(error);
    }
    const mode_t bits = status.st_mode & kCopiedBits;
    NewFile copy(to, bits);
    if (!copy.isOpen()) {
        return atDestination(errno);
    }
    error = settleBits(copy.get(), bits, known);
    if (error != 0) {
        return atDestination(error);
    }
    const Outcome outcome = fill(source.get(), status, copy.get());
    return outcome.failed() ? outcome : atDestination(copy.complete());
}

Outcome FileCopy::fill(int from, const struct stat& status, int to) {
    const Outcome outcome = content_.copy(from, status, to);
    if (outcome.failed() || times_ == Times::New) {
        return outcome;
    }
    return atDestination(carryTimes(status, to));
}

}  // namespace fl::filesystem::posix
