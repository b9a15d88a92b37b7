#pragma once

#include <pkgcore/portable/storage/layer/Spot.hpp>

#include <vector>

namespace foundation::storage::portable {

/// Goes through what a folder holds, a page of each folder at a time; the caller says which folders to go
/// into. What it stands on may be removed.
class TreeWalk {
public:
    /// NotFound where no folder is.
    explicit TreeWalk(Spot root);

    enum class Step : unsigned char {
        Entry,  ///< stands on an entry
        Left,   ///< a folder that was entered has ended; spot() and item() are that folder again
        End     ///< the root has ended
    };
    Step next();

    Spot spot() const { return levels_.back().folder.child(item().name); }
    vfs::CanonicalAbsoluteIRI iri() const { return levels_.back().folder.childIRI(item().name); }
    const provider::ListItem& item() const noexcept { return levels_.back().page[levels_.back().at]; }

    /// Gives up the folder that it is in: Left, or End for the root.
    Step leave();

    /// Goes into the folder that it stands on.
    void enter();

    /// The same, but goes on behind a folder that is gone.
    void enterIfThere();

private:
    using Page = std::vector<provider::ListItem>;

    struct Level {
        Spot folder;
        std::unique_ptr<provider::Lister> lister;
        Page page;              ///< of which there may be more than is shown
        std::size_t count = 0;  ///< how many are shown
        std::size_t at = 0;
    };

    Level open(Spot folder);
    static void refill(Level& level);

    std::vector<Level> levels_;
    Page spare_;  ///< of the last folder that was left, for the next one
};

}  // namespace foundation::storage::portable
