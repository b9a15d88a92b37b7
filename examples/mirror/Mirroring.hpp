#pragma once

#include "Listing.hpp"
#include "Place.hpp"
#include "Tally.hpp"

#include <utility>
#include <vector>

namespace mirror {

/// Makes one place hold what another holds.
class Mirroring {
public:
    Mirroring(const Place& from, const Place& to) : from_(from), to_(to) {}

    /// Copies what is new or different; false if that could not be begun, or was interrupted. With
    /// `mayRemove`, what is at the destination alone is removed before, but only if all of the source could
    /// be listed: a file that was not seen is not a file that is gone.
    bool run(bool mayRemove);

    const Tally& tally() const { return tally_; }

private:
    Listing listAll(const Place& place);
    bool prepare();
    void mirrorAll(bool mayRemove);
    void removeOthers();
    bool isOther(const opc::ustring& relative, Kind kind) const;
    void mirrorItem(const opc::ustring& relative, const Listed& source);
    void mirrorFolder(const Item& original, const Item& copy);
    void mirrorFile(const Item& original, const Item& copy);
    void mirrorLink(const Item& original, const Item& copy);
    void markFolders();
    Item copyOf(const opc::ustring& relative) const;

    template <typename Work>
    void attempt(Work work);

    const Place& from_;
    const Place& to_;
    Listing sources_;
    std::vector<std::pair<Item, Item>> folders_;  ///< and their copies, that are there now
    Tally tally_;
};

}  // namespace mirror
