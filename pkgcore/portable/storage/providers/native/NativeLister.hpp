#pragma once

#include <pkgcore/portable/filesystem/FileDescriptor.hpp>
#include <pkgcore/portable/storage/Provider.hpp>

#include <functional>
#include <string>

namespace foundation::storage::portable {

/// Lists a folder of the host in order. The host has no order, so each page is the smallest names behind
/// those that were shown, found in one pass over the folder: one pass for nearly all folders, and bounded
/// memory for a folder of any size. The folder is opened for each page, and no descriptor is kept between
/// two.
class NativeLister : public provider::Lister {
public:
    static constexpr std::size_t kPageSize = 65'536;

    /// Opens the folder for reading; throws what the file system throws.
    using Open = std::function<fl::filesystem::posix::FileDescriptor()>;
    /// Whether a link, by its name, counts as a folder.
    using LeadsToFolder = std::function<bool(const std::u16string& name)>;

    NativeLister(Open open, LeadsToFolder leadsToFolder, std::size_t pageSize = kPageSize);

    std::vector<provider::ListItem> next() override;

private:
    struct Found;

    std::vector<Found> smallestBehind() const;
    provider::ListItem itemFor(Found found) const;

    Open open_;
    LeadsToFolder leadsToFolder_;
    std::size_t pageSize_;
    std::u16string last_;  ///< no name is empty
    bool isDone_ = false;
};

}  // namespace foundation::storage::portable
