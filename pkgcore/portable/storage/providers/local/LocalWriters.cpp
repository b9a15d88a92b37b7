#include <pkgcore/portable/storage/providers/local/LocalWriters.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/FileCopy.hpp>
#include <pkgcore/portable/filesystem/TemporarySibling.hpp>
#include <pkgcore/portable/storage/providers/local/LocalErrors.hpp>
#include <pkgcore/portable/storage/providers/local/LocalRename.hpp>

#include <fcntl.h>

namespace foundation::storage::portable {

namespace posix = fl::filesystem::posix;

using posix::FileDescriptor;

namespace {

constexpr mode_t kNewFileMode = 0666;

void throwIfFailed(int error, const std::u16string& path) {
    if (error != 0) {
        posix::throwError(error, path);
    }
}

FileDescriptor opened(FileDescriptor file, const std::u16string& path) {
    throwIfFailed(file.isOpen() ? 0 : errno, path);
    return file;
}

/// The end of an open file to which bytes are added, and how much of it is committed.
class FileEnd {
public:
    explicit FileEnd(const std::u16string& path) : path_(path) {}

    void open(FileDescriptor file) { file_ = opened(std::move(file), path_); }
    int get() const noexcept { return file_.get(); }

    void write(const char* bytes, std::size_t count) {
        throwIfFailed(posix::writeAll(file_.get(), bytes, count), path_);
        isAhead_ = true;
    }

    /// Takes all that is in the file as committed. What has no size, such as a pipe, has nothing to cut off.
    void commit() {
        struct stat status;
        throwIfFailed(posix::readStatus(file_.get(), status), path_);
        committed_ = S_ISREG(status.st_mode) ? status.st_size : 0;
        isAhead_ = false;
    }

    /// Cuts off what was not committed.
    void discard() noexcept {
        if (isAhead_) {
            posix::errorOf([this] { return posix::systemCalls().ftruncate(file_.get(), committed_); });
            isAhead_ = false;
        }
    }

private:
    const std::u16string& path_;
    FileDescriptor file_;
    off_t committed_ = 0;
    bool isAhead_ = false;
};

class AppendingWriter : public provider::Writer {
public:
    explicit AppendingWriter(const std::u16string& path) : path_(path), end_(path_) {
        const posix::Place place(path_);
        end_.open(posix::openAt(place.orThrow().directory(), place.path(), O_WRONLY | O_APPEND | O_NOCTTY));
        end_.commit();
    }
    ~AppendingWriter() override { end_.discard(); }

    void write(const char* bytes, std::size_t count) override {
        asStorage(Purpose::Creating, [&] { end_.write(bytes, count); });
    }
    void commit() override {
        asStorage(Purpose::Creating, [this] { end_.commit(); });
    }
    void discard() noexcept override { end_.discard(); }

private:
    std::u16string path_;
    FileEnd end_;
};

class ReplacingWriter : public provider::Writer {
public:
    ReplacingWriter(const std::u16string& path, bool mayReplace)
        : path_(path), place_(path_), sibling_(place_.orThrow()), end_(path_), mayReplace_(mayReplace) {
        const posix::Item item = sibling_.item();
        end_.open(posix::openAt(item.folder, item.name, O_WRONLY | O_CREAT | O_EXCL, kNewFileMode));
        sibling_.setMade();
        takeOverBits();
    }
    ~ReplacingWriter() override { discard(); }

    void write(const char* bytes, std::size_t count) override {
        asStorage(Purpose::Creating, [&] { end_.write(bytes, count); });
    }

    void commit() override {
        asStorage(Purpose::Creating, [this] {
            end_.commit();
            if (isPublished_) {
                requireOwnFile();
            } else {
                publish();
            }
        });
    }

    // The temporary file goes with the writer; a published one is cut.
    void discard() noexcept override {
        if (isPublished_) {
            end_.discard();
        }
    }

private:
    void takeOverBits() {
        struct stat old;
        const posix::Item item = posix::itemAt(place_);
        if (posix::readStatus(item, old) == 0 && S_ISREG(old.st_mode)) {
            throwIfFailed(posix::errorOf([&] {
                              return posix::systemCalls().fchmod(end_.get(),
                                                                 old.st_mode & posix::kCopiedBits);
                          }),
                          path_);
        }
    }

    void publish() {
        if (mayReplace_) {
            throwIfFailed(sibling_.moveIntoPlace(), path_);
        } else {
            throwIfFailed(renameNew(sibling_.item(), posix::itemAt(place_)), path_);
            sibling_.setMoved();
        }
        isPublished_ = true;
    }

    /// One who replaced the file after it was published first has the last word.
    void requireOwnFile() {
        struct stat own;
        struct stat there;
        throwIfFailed(posix::readStatus(end_.get(), own), path_);
        throwIfFailed(posix::readStatus(posix::itemAt(place_), there), path_);
        if (!posix::isSameItem(own, there)) {
            throw vfs::Exception(vfs::ErrorCode::IOError, "The file was replaced while it was written");
        }
    }

    std::u16string path_;
    posix::Place place_;
    posix::TemporarySibling sibling_;
    FileEnd end_;
    bool mayReplace_;
    bool isPublished_ = false;
};

}  // namespace

std::unique_ptr<provider::Writer> replaceLocalFile(const std::u16string& path, bool mayReplace) {
    return std::make_unique<ReplacingWriter>(path, mayReplace);
}

std::unique_ptr<provider::Writer> appendToLocalFile(const std::u16string& path) {
    return std::make_unique<AppendingWriter>(path);
}

}  // namespace foundation::storage::portable
