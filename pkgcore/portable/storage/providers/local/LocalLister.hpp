#pragma once

#include <pkgcore/portable/storage/Provider.hpp>

#include <string>

namespace foundation::storage::portable {

/// Lists a native folder in order. The host has no order, so each page is the smallest names behind those
/// that were shown, found in one pass over the folder: one pass for nearly all folders, and bounded memory
/// for a folder of any size. No descriptor is kept between two pages.
class LocalLister : public provider::Lister {
public:
    static constexpr std::size_t kPageSize = 65'536;

    explicit LocalLister(std::u16string folder, std::size_t pageSize = kPageSize);

    std::vector<provider::ListItem> next() override;

private:
    struct Found;

    std::vector<Found> smallestBehind() const;
    provider::ListItem itemFor(const Found& found) const;

    std::u16string folder_;
    std::size_t pageSize_;
    std::u16string last_;  ///< no name is empty
    bool isDone_ = false;
};

}  // namespace foundation::storage::portable
