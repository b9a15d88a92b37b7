#include <pkgcore/portable/storage/providers/native/NativeWriters.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/FileCopy.hpp>
#include <pkgcore/portable/filesystem/TemporarySibling.hpp>
#include <pkgcore/portable/storage/providers/native/NativeErrors.hpp>
#include <pkgcore/portable/storage/providers/native/NativeMoves.hpp>

namespace foundation::storage::portable {

namespace posix = fl::filesystem::posix;

using posix::FileDescriptor;
using posix::Item;

namespace {

constexpr mode_t kNewFileMode = 0666;

void throwIfFailed(int error) {
    if (error != 0) {
        posix::throwError(error, std::u16string());
    }
}

FileDescriptor openOrThrow(Item item, int flags) {
    FileDescriptor file =
        posix::openAt(item.folder, item.name, flags | O_WRONLY | O_NOFOLLOW | O_NOCTTY, kNewFileMode);
    throwIfFailed(file.isOpen() ? 0 : errno);
    return file;
}

/// The end of an open file to which bytes are added, and how much of it is committed.
class FileEnd {
public:
    explicit FileEnd(FileDescriptor file) : file_(std::move(file)) {
        struct stat status;
        throwIfFailed(posix::readStatus(file_.get(), status));
        committed_ = status.st_size;
    }

    int get() const noexcept { return file_.get(); }

    void write(const char* bytes, std::size_t count) {
        ahead_ += static_cast<off_t>(count);  // or less, where it fails
        throwIfFailed(posix::writeAll(file_.get(), bytes, count));
    }

    void commit() noexcept {
        committed_ += ahead_;
        ahead_ = 0;
    }

    /// Cuts off what was not committed, unless somebody else has written to the file as well. What has no
    /// size, such as a pipe, has nothing to cut off.
    void discard() noexcept {
        struct stat status;
        const bool isOurs = ahead_ > 0 && posix::readStatus(file_.get(), status) == 0 &&
                            status.st_size > committed_ && status.st_size <= committed_ + ahead_;
        if (isOurs) {
            posix::errorOf([this] { return posix::systemCalls().ftruncate(file_.get(), committed_); });
        }
        ahead_ = 0;
    }

private:
    FileDescriptor file_;
    off_t committed_ = 0;
    off_t ahead_ = 0;  ///< written since
};

/// What is written to a file that was replaced or removed meanwhile is seen by nobody, and lost in silence.
void requireSameFile(int opened, Item place) {
    struct stat own;
    struct stat there;
    throwIfFailed(posix::readStatus(opened, own));
    throwIfFailed(posix::readStatus(place, there));
    if (!posix::isSameItem(own, there)) {
        throw vfs::Exception(vfs::ErrorCode::IOError, "The file was replaced while it was written");
    }
}

class AppendingWriter : public provider::Writer {
public:
    explicit AppendingWriter(HeldItem file)
        : file_(std::move(file)), end_(openOrThrow(file_.item(), O_APPEND)) {}
    ~AppendingWriter() override { end_.discard(); }

    void write(const char* bytes, std::size_t count) override {
        asStorage(Purpose::Creating, [&] { end_.write(bytes, count); });
    }
    void commit() override {
        asStorage(Purpose::Creating, [this] { requireSameFile(end_.get(), file_.item()); });
        end_.commit();
    }
    void discard() noexcept override { end_.discard(); }

private:
    HeldItem file_;
    FileEnd end_;
};

class ReplacingWriter : public provider::Writer {
public:
    ReplacingWriter(HeldItem file, bool mayReplace)
        : file_(std::move(file)),
          sibling_(file_.folder.get()),
          end_(create(sibling_)),
          mayReplace_(mayReplace) {
        takeOverBits();
    }
    ~ReplacingWriter() override { cut(); }

    void write(const char* bytes, std::size_t count) override {
        asStorage(Purpose::Creating, [&] { end_.write(bytes, count); });
    }

    void commit() override {
        asStorage(Purpose::Creating, [this] {
            if (isPublished_) {
                requireSameFile(end_.get(), file_.item());
            } else {
                publish();
            }
            end_.commit();
        });
    }

    void discard() noexcept override { cut(); }

private:
    // The temporary file goes with the writer; a published one is cut.
    void cut() noexcept {
        if (isPublished_) {
            end_.discard();
        }
    }

    static FileDescriptor create(posix::TemporarySibling& sibling) {
        FileDescriptor file = openOrThrow(sibling.item(), O_CREAT | O_EXCL);
        sibling.setMade(true);
        return file;
    }

    void takeOverBits() {
        struct stat old;
        const int error = posix::readStatus(file_.item(), old);
        if (error == ENOENT) {
            return;
        }
        throwIfFailed(error);
        if (S_ISREG(old.st_mode)) {
            throwIfFailed(posix::errorOf(
                [&] { return posix::systemCalls().fchmod(end_.get(), old.st_mode & posix::kCopiedBits); }));
        }
    }

    void publish() {
        throwIfFailed(mayReplace_ ? posix::renameItem(sibling_.item(), file_.item())
                                  : renameNew(sibling_.item(), file_.item()));
        sibling_.setMade(false);
        isPublished_ = true;
    }

    HeldItem file_;
    posix::TemporarySibling sibling_;
    FileEnd end_;
    bool mayReplace_;
    bool isPublished_ = false;
};

}  // namespace

std::unique_ptr<provider::Writer> replaceFile(HeldItem file, bool mayReplace) {
    return std::make_unique<ReplacingWriter>(std::move(file), mayReplace);
}

std::unique_ptr<provider::Writer> appendToFile(HeldItem file) {
    return std::make_unique<AppendingWriter>(std::move(file));
}

}  // namespace foundation::storage::portable
