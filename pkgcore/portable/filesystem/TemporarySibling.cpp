#include <pkgcore/portable/filesystem/TemporarySibling.hpp>

#include <pkgcore/portable/filesystem/RandomName.hpp>
#include <pkgcore/portable/filesystem/TreeRemoval.hpp>

#include <exception>

namespace fl::filesystem::posix {

namespace {

// Nothing of the item's own name: that may be as long as a name can be.
std::string drawName() {
    std::u16string name = u".";
    appendRandomName(name);
    name += u".tmp";
    return std::string(name.begin(), name.end());
}

}  // namespace

TemporarySibling::TemporarySibling(const Place& item) : parent_(item), name_(drawName()) {}

TemporarySibling::~TemporarySibling() {
    if (!made_) {
        return;
    }
    try {
        removeTree(item(), std::u16string(), Ownership::ours);
    } catch (const std::exception&) {
        // The failure that brought us here is on its way; that the remains could not be removed is the lesser
        // news.
    }
}

int TemporarySibling::moveIntoPlace() noexcept {
    const Item from = item();
    const Item to = parent_.item();
    const int error = withOneNumberForNotEmpty(
        errorOf([&] { return systemCalls().renameat(from.folder, from.name, to.folder, to.name); }));
    made_ = error != 0;
    return error;
}

}  // namespace fl::filesystem::posix
