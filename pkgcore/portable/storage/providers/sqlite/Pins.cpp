#include <pkgcore/portable/storage/providers/sqlite/Pins.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <utility>

namespace foundation::storage::sqlite {

using vfs::ErrorCode;
using Lock = std::unique_lock<std::mutex>;

namespace {

/// Locked by everybody who has the file open; nothing in the store has this number.
constexpr std::int64_t kPresence = std::int64_t{1} << 62;

/// Of one byte, or of all of them.
struct flock lockOf(short type, std::int64_t start, std::int64_t length = 1) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return lock;
}

// Locks of the open file, not of the process: two stores in one process see each other's.
bool setLock(int file, short type, std::int64_t start, std::int64_t length = 1) {
    struct flock lock = lockOf(type, start, length);
    return ::fcntl(file, F_OFD_SETLK, &lock) == 0;
}

[[noreturn]] void failAt(int error) { failInUse(error, "The file of locks beside the store"); }

bool isAt(int file, const std::string& path) {
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(file, &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// Whoever may use the store may use this file. Never by a link, which could lead to any other.
int openLike(const std::string& storePath, const std::string& path) {
    struct stat store = {};
    const mode_t mode = ::stat(storePath.c_str(), &store) == 0 ? store.st_mode & 0666U : 0600U;
    int file = ::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC);
    if (file < 0 && errno == ENOENT) {
        file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, mode);
        if (file >= 0) ::fchmod(file, mode);
    }
    return file;
}

}  // namespace

Pin& Pin::operator=(Pin&& other) noexcept {
    if (this != &other) {
        release();
        pins_ = std::exchange(other.pins_, nullptr);
        number_ = other.number_;
    }
    return *this;
}

void Pin::release() noexcept {
    if (pins_ != nullptr) {
        std::exchange(pins_, nullptr)->release(number_);
    }
}

Pins::Pins(std::string storePath, Patience patience, bool isRequired)
    : path_(storePath + "-pins"),
      storePath_(std::move(storePath)),
      patience_(patience),
      isRequired_(isRequired) {}

Pins::~Pins() {
    const bool isChild = process_.isLeft();
    if (!isChild) {
        takeOver();
    }
    if (file_ >= 0) {
        if (!isChild) removeIfLast();
        ::close(file_);
    }
}

/// A process that was killed has left the file behind.
void Pins::takeOver() noexcept {
    if (file_ >= 0 || !isRequired_ || ::access(path_.c_str(), F_OK) != 0) {
        return;
    }
    try {
        tryOpen();
    } catch (const std::exception&) {
        // It stays for the next one.
    }
}

// Nobody else has it open if it can be locked whole; who opens it now finds it locked, and then gone.
void Pins::removeIfLast() noexcept {
    if (setLock(file_, F_WRLCK, 0, 0) && isAt(file_, path_)) {
        ::unlink(path_.c_str());
    }
}

/// False while somebody is removing the file.
bool Pins::tryOpen() {
    const int file = openLike(storePath_, path_);
    if (file < 0) {
        failAt(errno);
    }
    const int error = setLock(file, F_RDLCK, kPresence) ? 0 : errno;
    if (error == 0 && isAt(file, path_)) {
        file_ = file;
        return true;
    }
    ::close(file);
    if (error != 0 && error != EAGAIN && error != EACCES) {
        failAt(error);
    }
    return false;
}

void Pins::open() {
    Patience patience = patience_;
    while (file_ < 0 && !tryOpen()) {
        if (!patience.rest(std::chrono::milliseconds(1))) {
            fail(ErrorCode::TemporarilyBusy);
        }
    }
}

Pin Pins::pin(std::int64_t number) {
    const Lock lock(mutex_);
    try {
        open();
    } catch (const vfs::Exception&) {
        if (isRequired_) throw;
        return {};
    }
    int& count = counts_[number];
    if (count == 0 && !setLock(file_, F_RDLCK, number)) {
        const int error = errno;
        counts_.erase(number);
        failAt(error);
    }
    ++count;
    return {*this, number};
}

void Pins::release(std::int64_t number) noexcept {
    if (process_.isLeft()) {
        return;  // the locks are the parent's as well
    }
    const Lock lock(mutex_);
    const auto found = counts_.find(number);
    if (found != counts_.end() && --found->second == 0) {
        counts_.erase(found);
        setLock(file_, F_UNLCK, number);
    }
}

bool Pins::isFree(std::int64_t number) {
    const Lock lock(mutex_);
    if (counts_.count(number) != 0) {
        return false;
    }
    open();
    struct flock asked = lockOf(F_WRLCK, number);
    if (::fcntl(file_, F_OFD_GETLK, &asked) != 0) {
        failAt(errno);
    }
    return asked.l_type == F_UNLCK;
}

}  // namespace foundation::storage::sqlite
