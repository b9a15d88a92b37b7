#pragma once

#include <pkgcore/portable/filesystem/Item.hpp>

#include <string>

namespace fl::filesystem::posix {

/// Something of the caller's own under a random name in an open folder, beside the item whose place it will
/// take. Goes away, with all that is in it, unless it is moved.
class TemporarySibling {
public:
    /// The folder stays open as long. Nothing is made yet.
    explicit TemporarySibling(int folder);
    TemporarySibling(const TemporarySibling&) = delete;
    TemporarySibling& operator=(const TemporarySibling&) = delete;
    ~TemporarySibling();

    Item item() const noexcept { return {folder_, name_.c_str()}; }

    /// To be called when there is something, and when it is somewhere else.
    void setMade(bool made) noexcept { made_ = made; }

    /// Renames it, over what the system's rename replaces: 0, or the error number.
    int moveTo(Item place) noexcept;

private:
    int folder_;
    std::string name_;
    bool made_ = false;
};

}  // namespace fl::filesystem::posix
