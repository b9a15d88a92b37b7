#pragma once

#include <pkgcore/portable/filesystem/FileDescriptor.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

namespace foundation::storage::portable {

/// Reads an open file of the host up to the end that it had when it was opened, so that one who appends to it
/// is not seen; one that is replaced is not seen anyway. A file of /proc, and what is no regular file, is
/// read until it ends.
class NativeReader : public provider::Reader {
public:
    /// NotFound for a folder.
    explicit NativeReader(fl::filesystem::posix::FileDescriptor file);

    std::size_t read(char* out, std::size_t count) override;
    std::size_t readAt(std::uint64_t offset, char* out, std::size_t count) override;
    std::optional<std::uint64_t> size() const override { return size_; }

private:
    void goTo(std::uint64_t offset);
    std::size_t readHere(char* out, std::size_t count);

    fl::filesystem::posix::FileDescriptor file_;
    std::optional<std::uint64_t> size_;
    bool isRegular_ = false;
    std::uint64_t next_ = 0;  ///< where read() goes on
    std::uint64_t here_ = 0;  ///< where the host stands
};

}  // namespace foundation::storage::portable
