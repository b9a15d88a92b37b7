#pragma once

#include <pkgcore/platform/storage/Listing.hpp>
#include <pkgcore/platform/storage/StorageSystemReference.hpp>
#include <pkgcore/portable/storage/layer/TreeWalk.hpp>

#include <string>

namespace foundation::storage::portable {

enum class Depth : unsigned char { Folder, Tree };

/// The entries of a folder, or of all that is below it, whose names match a pattern.
class ListingSource : public vfs::Listing::Source {
public:
    /// NotFound where no folder is.
    ListingSource(Spot folder, vfs::StorageSystemReference storage, std::u16string pattern, Depth depth);

    vfs::ListEntry* next() override;

private:
    void show();

    vfs::StorageSystemReference storage_;
    std::u16string pattern_;
    Depth depth_;
    vfs::ListEntry entry_;
    TreeWalk walk_;
    bool entersNext_ = false;
};

}  // namespace foundation::storage::portable
