#pragma once

#include <pkgcore/portable/filesystem/ParentFolder.hpp>

#include <string>

namespace fl::filesystem::posix {

/// A random name beside an item, under which its new content is made; goes away with what it names unless it
/// is moved into the item's place.
class TemporarySibling {
public:
    /// Throws, with the item's path, where there is no folder to hold it. Nothing is made yet. Refers to
    /// `item`.
    explicit TemporarySibling(const Place& item);
    TemporarySibling(const TemporarySibling&) = delete;
    TemporarySibling& operator=(const TemporarySibling&) = delete;
    ~TemporarySibling();

    Item item() const noexcept { return {parent_.folder(), name_.c_str()}; }

    /// To be called when something of the caller's own is at item(), so that it is removed in the end.
    void setMade() noexcept { made_ = true; }

    /// Renames it over the item: 0, or the error number.
    int moveIntoPlace() noexcept;

private:
    ParentFolder parent_;
    std::string name_;
    bool made_ = false;
};

}  // namespace fl::filesystem::posix
