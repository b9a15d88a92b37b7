#pragma once

#include <pkgcore/portable/filesystem/Item.hpp>

#include <string>

namespace foundation::storage::portable {

/// A name in a folder that is held open: nobody can put another folder in its place between two calls.
struct HeldItem {
    fl::filesystem::posix::FileDescriptor folder;
    std::string name;

    fl::filesystem::posix::Item item() const noexcept { return {folder.get(), name.c_str()}; }
};

/// The item at a native path that begins at the root. Throws what the file system throws where there is no
/// folder to hold it.
HeldItem heldItem(const std::u16string& path);

/// A fresh name, for what will take the place of an item beside it.
std::string temporaryName();

/// Something of the caller's own under a fresh name beside an item, which goes unless it is moved.
class HeldSibling {
public:
    explicit HeldSibling(int folder) : folder_(folder), name_(temporaryName()) {}
    HeldSibling(const HeldSibling&) = delete;
    HeldSibling& operator=(const HeldSibling&) = delete;
    ~HeldSibling();

    fl::filesystem::posix::Item item() const noexcept { return {folder_, name_.c_str()}; }

    /// To be called when there is something, and when it is somewhere else.
    void setMade(bool isMade) noexcept { isMade_ = isMade; }

private:
    int folder_;
    std::string name_;
    bool isMade_ = false;
};

}  // namespace foundation::storage::portable
