#pragma once

#include <utility>

namespace fl::filesystem::posix {

/// Sole owner of an open descriptor, or of none.
class FileDescriptor {
public:
    FileDescriptor() noexcept = default;
    explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.release()) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~FileDescriptor() {
        if (isOpen()) {
            reset();
        }
    }

    int get() const noexcept { return descriptor_; }
    bool isOpen() const noexcept { return descriptor_ >= 0; }
    int release() noexcept { return std::exchange(descriptor_, -1); }

    /// Closes what is held, without a word about a failure, and holds `descriptor` from now on. errno is
    /// kept.
    void reset(int descriptor = -1) noexcept;

    /// Closes and tells the error number of a close that failed, 0 if it did not: the last moment at which a
    /// network file system reports that data did not arrive. The descriptor is gone in any case.
    int close() noexcept;

private:
    int descriptor_ = -1;
};

}  // namespace fl::filesystem::posix
