#pragma once

#include "Place.hpp"
#include "Tally.hpp"

namespace mirror {

/// Makes one place hold the files of another.
class Mirroring {
public:
    Mirroring(const Place& from, const Place& to) : from_(from), to_(to) {}

    /// Copies what is new or different; false if that could not be begun, or was interrupted. With
    /// `mayRemove`, what is at the destination alone is removed before, but only if all of the source could
    /// be listed: a file that was not seen is not a file that is gone.
    bool run(bool mayRemove);

    const Tally& tally() const { return tally_; }

private:
    bool prepare();
    void mirrorAll(bool mayRemove);
    void removeOthers();
    void removeOther(const opc::ustring& path);
    void mirrorFile(const opc::ustring& relative, const opc::ustring& source);
    bool mayBeCopied(const opc::ustring& source);
    void makeFolder(const opc::ustring& folder);

    template <typename Work>
    void attempt(Work work);

    const Place& from_;
    const Place& to_;
    Listing sources_;
    opc::ustring lastFolder_;
    Tally tally_;
};

}  // namespace mirror
