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

}  // namespace foundation::storage::portable
