#include <pkgcore/portable/storage/providers/local/LocalProvider.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>
#include <pkgcore/portable/storage/providers/local/LocalErrors.hpp>
#include <pkgcore/portable/storage/providers/local/LocalItems.hpp>
#include <pkgcore/portable/storage/providers/local/LocalLister.hpp>
#include <pkgcore/portable/storage/providers/local/LocalReader.hpp>
#include <pkgcore/portable/storage/providers/local/LocalRename.hpp>
#include <pkgcore/portable/storage/providers/local/LocalSibling.hpp>
#include <pkgcore/portable/storage/providers/local/LocalWriters.hpp>

#include <fcntl.h>

namespace foundation::storage::provider {

namespace {

namespace fs = fl::filesystem;
namespace posix = fl::filesystem::posix;

using portable::asStorage;
using portable::LocalStatus;
using portable::Purpose;

constexpr mode_t kAllBits = 07777;
constexpr mode_t kWriteBits = 0222;
constexpr mode_t kOwnerWriteBit = 0200;
constexpr std::size_t kLongestName = 255;

std::u16string nativePath(const Path& path) { return u'/' + path.text(); }

LocalStatus require(const std::u16string& path) {
    const std::optional<LocalStatus> found = portable::localStatus(path);
    if (!found) {
        throw fs::PathNotFound(path);
    }
    return *found;
}

/// Removes what a failed copy has left, which is the lesser news.
void removeRemains(const std::u16string& path) noexcept {
    try {
        fs::remove_all(path);
    } catch (const std::exception&) {
    }
}

void putInPlace(const std::u16string& made, const std::u16string& to, ReplacementPolicy policy) {
    if (policy == ReplacementPolicy::FailIfExists) {
        portable::moveNew(made, to);
    } else {
        portable::moveOver(made, to);
    }
}

void copyLocal(const std::u16string& from, const std::u16string& to, ReplacementPolicy policy) {
    const bool isFolder = S_ISDIR(require(from).status.st_mode);
    const std::u16string source = portable::resolvedLink(from);
    const std::u16string copy = portable::localSibling(to);
    try {
        if (isFolder) {
            fs::copy_directory(source, copy);
        } else {
            fs::copy_file(source, copy, fs::copy_option::fail_if_exists);
        }
        putInPlace(copy, to, policy);
    } catch (...) {
        removeRemains(copy);
        throw;
    }
}

class LocalProvider : public Provider {
public:
    Traits traits() const override {
        Traits traits;
        traits.readsAt = true;
        traits.writes = true;
        traits.appends = true;
        traits.createsFolders = true;
        traits.removes = true;
        traits.removesTrees = true;
        traits.copiesFiles = true;
        traits.copiesFolders = true;
        traits.movesFiles = true;
        traits.movesFolders = true;
        traits.setsWritable = true;
        traits.setsLastModified = true;
        traits.hasByteNames = true;
        traits.growsInPlace = true;
        traits.maxNameLength = kLongestName;
        return traits;
    }

    std::optional<Item> find(const Path& path) override {
        return asStorage(Purpose::Reading, [&]() -> std::optional<Item> {
            const std::optional<LocalStatus> found = portable::localStatus(nativePath(path));
            return found ? std::optional<Item>(portable::itemOf(*found)) : std::nullopt;
        });
    }

    std::unique_ptr<Lister> list(const Path& folder) override {
        return asStorage(Purpose::Reading, [&] {
            std::u16string native = nativePath(folder);
            if (!S_ISDIR(require(native).status.st_mode)) {
                throw fs::NotDirectoryError(native);
            }
            return std::make_unique<portable::LocalLister>(std::move(native));
        });
    }

    std::unique_ptr<Reader> openReader(const Path& file) override {
        return asStorage(Purpose::Reading, [&] {
            const std::u16string native = nativePath(file);
            const posix::Place place(native);
            posix::FileDescriptor opened =
                posix::openAt(place.orThrow().directory(), place.path(), O_RDONLY | O_NOCTTY);
            if (!opened.isOpen()) {
                posix::throwError(errno, native);
            }
            return std::make_unique<portable::LocalReader>(std::move(opened));
        });
    }

    std::unique_ptr<Writer> openWriter(const Path& file, WriteMode mode) override {
        return asStorage(Purpose::Creating, [&] {
            const std::u16string native = portable::resolvedLink(nativePath(file));
            const std::optional<LocalStatus> found = portable::localStatus(native);
            if (found && S_ISDIR(found->status.st_mode)) {
                throw fs::FileExistsError(native);
            }
            const bool isRegular = !found || S_ISREG(found->status.st_mode);
            if (found && (mode == WriteMode::Append || !isRegular)) {
                return portable::appendToLocalFile(native);
            }
            return portable::replaceLocalFile(native, mode != WriteMode::CreateNew);
        });
    }

    void createFolder(const Path& folder) override {
        asStorage(Purpose::Creating, [&] { fs::create_directory(nativePath(folder)); });
    }

    void remove(const Path& path) override {
        asStorage(Purpose::Reading, [&] { fs::remove(nativePath(path)); });
    }

    void removeTree(const Path& folder) override {
        asStorage(Purpose::Reading, [&] { fs::remove_all(nativePath(folder)); });
    }

    void copy(const Path& from, const Path& to, ReplacementPolicy policy) override {
        asStorage(Purpose::Creating, [&] { copyLocal(nativePath(from), nativePath(to), policy); });
    }

    void move(const Path& from, const Path& to, ReplacementPolicy policy) override {
        asStorage(Purpose::Creating, [&] { putInPlace(nativePath(from), nativePath(to), policy); });
    }

    // Only the owner gets the right back: whoever else had it is not known any more.
    void setWritable(const Path& path, bool isWritable) override {
        asStorage(Purpose::Reading, [&] {
            const std::u16string native = nativePath(path);
            const mode_t bits = require(native).status.st_mode & kAllBits;
            fs::permissions(native, isWritable ? bits | kOwnerWriteBit : bits & ~kWriteBits);
        });
    }

    void setLastModified(const Path& path, const boost::posix_time::ptime& time) override {
        asStorage(Purpose::Reading,
                  [&] { fs::last_write_time(portable::resolvedLink(nativePath(path)), time); });
    }
};

}  // namespace

std::shared_ptr<Provider> makeLocalProvider() { return std::make_shared<LocalProvider>(); }

}  // namespace foundation::storage::provider
