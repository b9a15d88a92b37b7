#include <pkgcore/portable/storage/providers/sqlite/Creation.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Connection.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>
#include <pkgcore/portable/storage/providers/sqlite/PathBytes.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Random.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Recognition.hpp>
#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string_view>
#include <utility>

namespace foundation::storage::sqlite {

namespace {

/// Of file systems, in bytes.
constexpr std::size_t kMaxFileName = 255;

/// What SQLite adds to the name of the file.
constexpr std::string_view kJournal = "-journal";

std::size_t lengthOfName(const std::string& path) { return path.size() - (path.rfind('/') + 1); }

/// Beside the path, so that it can be given the name.
std::string freshName(const std::string& path) {
    constexpr char kDigits[] = "0123456789abcdefghijklmnopqrstuv";
    constexpr std::size_t kLength = 20;
    constexpr std::string_view kEnding = ".new";
    constexpr std::size_t kAdded = 1 + kLength + kEnding.size() + kJournal.size();
    const bool isLong = lengthOfName(path) > kMaxFileName - kAdded;
    unsigned char draws[kLength];
    fillRandom(draws, sizeof draws);
    std::string name = (isLong ? folderOf(path) + "store" : path) + '.';
    for (const unsigned char draw : draws) {
        name += kDigits[draw % 32];
    }
    return name.append(kEnding);
}

/// A file that goes away, with its journal, unless it was given its name.
class NewFile {
public:
    explicit NewFile(std::string path) : path_(std::move(path)), journal_(path_ + std::string(kJournal)) {}
    ~NewFile() {
        if (!isNamed_) {
            ::unlink(path_.c_str());
            ::unlink(journal_.c_str());
        }
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    const std::string& path() const noexcept { return path_; }

    /// False if something has that name.
    bool giveName(const std::string& name) {
        isNamed_ = ::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, name.c_str(), RENAME_NOREPLACE) == 0;
        const bool isUnknown = errno == EINVAL || errno == ENOSYS;
        if (!isNamed_ && isUnknown) {
            // As on a file system that cannot do it in one call; the first name goes with this object.
            return link(name);
        }
        if (!isNamed_ && errno != EEXIST) {
            failWithSystem(errno, "The store cannot be given its name");
        }
        return isNamed_;
    }

private:
    bool link(const std::string& name) const {
        const bool isLinked = ::link(path_.c_str(), name.c_str()) == 0;
        if (!isLinked && errno != EEXIST) {
            failWithSystem(errno, "The store cannot be given its name");
        }
        return isLinked;
    }

    std::string path_;
    std::string journal_;  ///< made beforehand: a destructor may not fail
    bool isNamed_ = false;
};

/// Brings a new name to the disk. Not every file system can, and a folder that may not be read is not opened;
/// the store is whole either way.
void syncFolderOf(const std::string& path) {
    const int file = ::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0 && errno == EACCES) {
        return;
    }
    const int error = file >= 0 && ::fsync(file) == 0 ? 0 : errno;
    if (file >= 0) ::close(file);
    if (error != 0 && error != EINVAL && error != ENOTSUP) {
        failWithSystem(error, "The name of the new store cannot be brought to the disk");
    }
}

bool holdsSomething(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && status.st_size > 0;
}

/// SQLite would bring what is in the journal of a store that has gone into the new one. One that appears only
/// after this belongs to somebody at work in a store that was deleted meanwhile: that can happen at any time
/// later, too, and cannot be told from the journal of the first one who changes the new store.
void requireNoJournal(const std::string& path) {
    for (const char* const ending : {"-journal", "-wal"}) {
        const bool isInTheWay = holdsSomething(path + ending) && look(path) == Found::Nothing;
        if (isInTheWay) {
            fail(vfs::ErrorCode::NotRecoverable,
                 "No store can be made beside the journal of one that has gone: " + path + ending);
        }
    }
}

}  // namespace

bool createStore(const std::string& path, std::chrono::milliseconds busyTime) {
    if (lengthOfName(path) > kMaxFileName - kJournal.size()) {
        fail(vfs::ErrorCode::NotSupported,
             "The name of the store is too long: its journal needs a longer one");
    }
    requireWritable(folderOf(path));
    NewFile file(freshName(path));
    requireFitting(file.path());
    {
        Connection connection(file.path(), Access::Create, busyTime);
        connection.execute("PRAGMA synchronous = FULL");
        createSchema(connection);
    }
    requireNoJournal(path);
    const bool isCreated = file.giveName(path);
    if (isCreated) {
        syncFolderOf(path);
    }
    return isCreated;
}

}  // namespace foundation::storage::sqlite
