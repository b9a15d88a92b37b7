#include <pkgcore/portable/filesystem/TemporarySibling.hpp>

#include <pkgcore/portable/filesystem/RandomName.hpp>
#include <pkgcore/portable/filesystem/TreeRemoval.hpp>

#include <exception>

namespace fl::filesystem::posix {

namespace {

std::string drawName() {
    const std::u16string name = temporaryName();
    return std::string(name.begin(), name.end());
}

}  // namespace

TemporarySibling::TemporarySibling(int folder) : folder_(folder), name_(drawName()) {}

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

int TemporarySibling::moveTo(Item place) noexcept {
    const int error = renameItem(item(), place);
    made_ = made_ && error != 0;
    return error;
}

}  // namespace fl::filesystem::posix
