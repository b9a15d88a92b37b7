#include <pkgcore/portable/storage/providers/folder/FolderProvider.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/FileTimes.hpp>
#include <pkgcore/portable/filesystem/ModifiedTime.hpp>
#include <pkgcore/portable/filesystem/TreeRemoval.hpp>
#include <pkgcore/portable/storage/providers/folder/ClosedFolder.hpp>
#include <pkgcore/portable/storage/providers/native/NativeErrors.hpp>
#include <pkgcore/portable/storage/providers/native/NativeLister.hpp>
#include <pkgcore/portable/storage/providers/native/NativeMoves.hpp>
#include <pkgcore/portable/storage/providers/native/NativeReader.hpp>
#include <pkgcore/portable/storage/providers/native/NativeTraits.hpp>
#include <pkgcore/portable/storage/providers/native/NativeWriters.hpp>

namespace foundation::storage::provider {

namespace {

namespace posix = fl::filesystem::posix;

using portable::asStorage;
using portable::ClosedFolder;
using portable::HeldItem;
using portable::Purpose;

const std::u16string kNoPath;

void throwIfFailed(int error) {
    if (error != 0) {
        posix::throwError(error, kNoPath);
    }
}

bool isAbsent(int error) noexcept { return error == ENOENT || error == ENOTDIR; }

/// What is no regular file is not opened: that alone can set something off, or wait.
void requireRegular(const struct stat& status) { throwIfFailed(posix::refusalToCopy(status)); }

/// The status of a file to be written, or none.
std::optional<struct stat> statusForWriting(const HeldItem& file) {
    struct stat status;
    const int error = posix::readStatus(file.item(), status);
    if (error == ENOENT) {
        return std::nullopt;
    }
    throwIfFailed(error);
    requireRegular(status);
    return status;
}

posix::FileDescriptor openFile(const HeldItem& file) {
    struct stat status;
    throwIfFailed(posix::readStatus(file.item(), status));
    requireRegular(status);
    posix::FileDescriptor opened =
        posix::openAt(file.folder.get(), file.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    throwIfFailed(opened.isOpen() ? 0 : errno);
    return opened;
}

class FolderProvider : public Provider {
public:
    explicit FolderProvider(const std::u16string& folder)
        : folder_(std::make_shared<const ClosedFolder>(folder)) {}

    Traits traits() const override { return portable::nativeTraits(); }

    std::optional<Item> find(const Path& path) override {
        try {
            return asStorage(Purpose::Reading, [&]() -> std::optional<Item> {
                const HeldItem held = folder_->hold(path);
                struct stat status;
                const int error = posix::readStatus(held.item(), status);
                if (isAbsent(error)) {
                    return std::nullopt;
                }
                throwIfFailed(error);
                return portable::nativeItem(status);
            });
        } catch (const vfs::Exception& failure) {
            if (failure.getErrorCode() == vfs::ErrorCode::NotFound) {
                return std::nullopt;  // the way there
            }
            throw;
        }
    }

    std::unique_ptr<Lister> list(const Path& folder) override {
        return asStorage(Purpose::Reading, [&] {
            const auto open = [world = folder_, folder] { return world->open(folder, O_RDONLY); };
            open();
            return std::make_unique<portable::NativeLister>(
                open, [](const std::u16string& /*name*/) { return false; });
        });
    }

    std::unique_ptr<Reader> openReader(const Path& file) override {
        return asStorage(Purpose::Reading, [&] {
            return std::make_unique<portable::NativeReader>(openFile(folder_->hold(file)));
        });
    }

    std::unique_ptr<Writer> openWriter(const Path& file, WriteMode mode) override {
        return asStorage(Purpose::Creating, [&] {
            HeldItem held = folder_->hold(file);
            const bool exists = statusForWriting(held).has_value();
            return exists && mode == WriteMode::Append
                       ? portable::appendToFile(std::move(held))
                       : portable::replaceFile(std::move(held), mode != WriteMode::CreateNew);
        });
    }

    void createFolder(const Path& folder) override {
        constexpr mode_t kNewFolderMode = 0777;
        asStorage(Purpose::Creating, [&] {
            const HeldItem held = folder_->hold(folder);
            throwIfFailed(posix::errorOf([&] {
                return posix::systemCalls().mkdirat(held.folder.get(), held.name.c_str(), kNewFolderMode);
            }));
        });
    }

    void remove(const Path& path) override {
        asStorage(Purpose::Reading, [&] {
            const HeldItem held = folder_->hold(path);
            struct stat status;
            throwIfFailed(posix::readStatus(held.item(), status));
            throwIfFailed(posix::unlinkItem(held.item(), S_ISDIR(status.st_mode) ? AT_REMOVEDIR : 0));
        });
    }

    void removeTree(const Path& folder) override {
        asStorage(Purpose::Reading, [&] { posix::removeTree(folder_->hold(folder).item(), kNoPath); });
    }

    void copy(const Path& from, const Path& to, ReplacementPolicy policy) override {
        asStorage(Purpose::Creating, [&] {
            const HeldItem source = folder_->hold(from);
            const HeldItem target = folder_->hold(to);
            portable::copyItem(source.item(), target.item(), policy, posix::Times::New);
        });
    }

    void move(const Path& from, const Path& to, ReplacementPolicy policy) override {
        asStorage(Purpose::Creating, [&] {
            const HeldItem source = folder_->hold(from);
            const HeldItem target = folder_->hold(to);
            portable::moveItem(source.item(), target.item(), policy);
        });
    }

    void setWritable(const Path& path, bool isWritable) override {
        asStorage(Purpose::Reading, [&] {
            const HeldItem held = folder_->hold(path);
            struct stat status;
            throwIfFailed(posix::readStatus(held.item(), status));
            const mode_t mode = portable::markedMode(status.st_mode, isWritable);
            throwIfFailed(posix::errorOf([&] {
                return posix::systemCalls().fchmodat(held.folder.get(), held.name.c_str(), mode,
                                                     AT_SYMLINK_NOFOLLOW);
            }));
        });
    }

    void setLastModified(const Path& path, const boost::posix_time::ptime& time) override {
        asStorage(Purpose::Reading, [&] {
            const HeldItem held = folder_->hold(path);
            throwIfFailed(posix::setModifiedTime(held.item(), posix::toTimespec(time)));
        });
    }

    void sync(const Path& path) override {
        asStorage(Purpose::Creating, [&] { portable::syncFileSystemOf(folder_->hold(path).item()); });
    }

private:
    std::shared_ptr<const ClosedFolder> folder_;
};

}  // namespace

std::shared_ptr<Provider> makeFolderProvider(const std::u16string& folder) {
    return asStorage(Purpose::Reading, [&] { return std::make_shared<FolderProvider>(folder); });
}

}  // namespace foundation::storage::provider
