#include <pkgcore/portable/storage/providers/local/LocalProvider.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/Item.hpp>
#include <pkgcore/portable/storage/providers/local/LocalItems.hpp>
#include <pkgcore/portable/storage/providers/native/HeldItem.hpp>
#include <pkgcore/portable/storage/providers/native/NativeErrors.hpp>
#include <pkgcore/portable/storage/providers/native/NativeLister.hpp>
#include <pkgcore/portable/storage/providers/native/NativeMoves.hpp>
#include <pkgcore/portable/storage/providers/native/NativeReader.hpp>
#include <pkgcore/portable/storage/providers/native/NativeTraits.hpp>
#include <pkgcore/portable/storage/providers/native/NativeWriters.hpp>

#include <fcntl.h>

namespace foundation::storage::provider {

namespace {

namespace fs = fl::filesystem;
namespace posix = fl::filesystem::posix;

using portable::asStorage;
using portable::LocalStatus;
using portable::Purpose;

std::u16string nativePath(const Path& path) { return u'/' + path.text(); }

/// The same without a text that only the system would read.
posix::Place placeOf(const Path& path) { return posix::Place(posix::BelowRoot{path.text()}); }

LocalStatus require(const std::u16string& path) {
    const std::optional<LocalStatus> found = portable::localStatus(posix::Place(path));
    if (!found) {
        throw fs::PathNotFound(path);
    }
    return *found;
}

posix::FileDescriptor openLocal(const posix::Place& place, int flags) {
    posix::FileDescriptor opened =
        posix::openAt(place.orThrow().directory(), place.path(), flags | O_RDONLY | O_NOCTTY);
    if (!opened.isOpen()) {
        posix::throwError(errno, place.text());
    }
    return opened;
}

bool leadsToFolder(const std::u16string& path) {
    const std::optional<LocalStatus> found = portable::localStatus(posix::Place(path));
    return found && S_ISDIR(found->status.st_mode);
}

class LocalProvider : public Provider {
public:
    Traits traits() const override { return portable::nativeTraits(); }

    std::optional<Item> find(const Path& path) override {
        return asStorage(Purpose::Reading, [&]() -> std::optional<Item> {
            const std::optional<LocalStatus> found = portable::localStatus(placeOf(path));
            return found ? std::optional<Item>(portable::itemOf(*found)) : std::nullopt;
        });
    }

    std::unique_ptr<Lister> list(const Path& folder) override {
        return asStorage(Purpose::Reading, [&] {
            const std::u16string native = nativePath(folder);
            const auto open = [native] { return openLocal(posix::Place(native), O_DIRECTORY); };
            open();
            return std::make_unique<portable::NativeLister>(
                open, [native](const std::u16string& name) { return leadsToFolder(native + u'/' + name); });
        });
    }

    std::unique_ptr<Reader> openReader(const Path& file) override {
        return asStorage(Purpose::Reading, [&] {
            return std::make_unique<portable::NativeReader>(openLocal(placeOf(file), 0));
        });
    }

    std::unique_ptr<Writer> openWriter(const Path& file, WriteMode mode) override {
        return asStorage(Purpose::Creating, [&] {
            const std::u16string native = portable::resolvedLink(nativePath(file));
            const std::optional<LocalStatus> found = portable::localStatus(posix::Place(native));
            if (found && S_ISDIR(found->status.st_mode)) {
                throw fs::FileExistsError(native);
            }
            portable::HeldItem item = portable::heldItem(native);
            if (found && (mode == WriteMode::Append || !S_ISREG(found->status.st_mode))) {
                return portable::appendToFile(std::move(item));
            }
            return portable::replaceFile(std::move(item), mode != WriteMode::CreateNew);
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
        asStorage(Purpose::Creating, [&] {
            const portable::HeldItem source = portable::heldItem(portable::resolvedLink(nativePath(from)));
            const portable::HeldItem target = portable::heldItem(nativePath(to));
            portable::copyItem(source.item(), target.item(), policy, posix::Times::New);
        });
    }

    void move(const Path& from, const Path& to, ReplacementPolicy policy) override {
        asStorage(Purpose::Creating, [&] {
            const portable::HeldItem source = portable::heldItem(nativePath(from));
            const portable::HeldItem target = portable::heldItem(nativePath(to));
            portable::moveItem(source.item(), target.item(), policy);
        });
    }

    void setWritable(const Path& path, bool isWritable) override {
        asStorage(Purpose::Reading, [&] {
            const std::u16string native = nativePath(path);
            fs::permissions(native, portable::markedMode(require(native).status.st_mode, isWritable));
        });
    }

    void setLastModified(const Path& path, const boost::posix_time::ptime& time) override {
        asStorage(Purpose::Reading,
                  [&] { fs::last_write_time(portable::resolvedLink(nativePath(path)), time); });
    }

    void sync(const Path& path) override {
        asStorage(Purpose::Creating, [&] {
            portable::syncFileSystemOf(portable::heldItem(portable::resolvedLink(nativePath(path))).item());
        });
    }
};

}  // namespace

std::shared_ptr<Provider> makeLocalProvider() { return std::make_shared<LocalProvider>(); }

}  // namespace foundation::storage::provider
