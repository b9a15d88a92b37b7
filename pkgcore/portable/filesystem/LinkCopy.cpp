#include <pkgcore/portable/filesystem/LinkCopy.hpp>

#include <pkgcore/portable/filesystem/LinkText.hpp>

#include <string>

namespace fl::filesystem::posix {

namespace {

Outcome carryLinkTimes(Item from, Item to) {
    struct stat status;
    if (const int error = readStatus(from, status); error != 0) {
        return atSource(error);
    }
    const timespec times[2] = {status.st_atim, status.st_mtim};
    return atDestination(
        errorOf([&] { return systemCalls().utimensat(to.folder, to.name, times, AT_SYMLINK_NOFOLLOW); }));
}

}  // namespace

Outcome copyLink(Item from, Item to, Times times) {
    std::string text;
    if (const int error = readLinkText(from.folder, from.name, text); error != 0) {
        return atSource(error);
    }
    const int error = errorOf([&] { return systemCalls().symlinkat(text.c_str(), to.folder, to.name); });
    if (error != 0 || times == Times::New) {
        return atDestination(error);
    }
    const Outcome outcome = carryLinkTimes(from, to);
    if (outcome.failed()) {
        unlinkItem(to, 0);
    }
    return outcome;
}

}  // namespace fl::filesystem::posix
