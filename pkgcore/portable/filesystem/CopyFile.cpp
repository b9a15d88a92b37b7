#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/FileCopy.hpp>
#include <pkgcore/portable/filesystem/ParentFolder.hpp>
#include <pkgcore/portable/filesystem/TemporarySibling.hpp>

namespace fl::filesystem {

using posix::atDestination;
using posix::atSource;
using posix::Item;
using posix::itemAt;
using posix::Outcome;
using posix::Place;

namespace {

/// Tells what is no file before it is opened, since opening a device can set something off.
Outcome checkSource(const Place& source, struct stat& status) {
    const int error = posix::readStatus(itemAt(source), status);
    return atSource(error != 0 ? error : posix::refusalToCopy(status));
}

/// Only a file or a link is replaced: the place of a device or a pipe is never taken by a file.
int refusalToReplace(const Place& target, const struct stat& source) {
    struct stat status;
    if (const int error = posix::readStatus(itemAt(target), status); error != 0) {
        return error == ENOENT ? 0 : error;
    }
    if (posix::isSameItem(status, source)) {
        return EEXIST;
    }
    return S_ISLNK(status.st_mode) ? 0 : posix::refusalToCopy(status);
}

Outcome copyNew(const Place& source, Item to) {
    posix::CreationBits known;
    return posix::FileCopy().copyNew(itemAt(source), to, known);
}

Outcome copyOver(const Place& source, const Place& target, const struct stat& sourceStatus) {
    if (const int error = refusalToReplace(target, sourceStatus); error != 0) {
        return atDestination(error);
    }
    const posix::ParentFolder parent(target);
    posix::TemporarySibling sibling(parent.folder());
    if (const Outcome outcome = copyNew(source, sibling.item()); outcome.failed()) {
        return outcome;
    }
    sibling.setMade(true);
    return atDestination(sibling.moveTo(parent.item()));
}

Outcome copy(const Place& source, const Place& target, copy_option option) {
    struct stat status;
    if (const Outcome outcome = checkSource(source, status); outcome.failed()) {
        return outcome;
    }
    if (option == copy_option::overwrite_if_exists) {
        return copyOver(source, target, status);
    }
    // Held open, so that a copy that fails is removed where it was made.
    const posix::ParentFolder parent(target);
    return copyNew(source, parent.item());
}

}  // namespace

void copy_file(const std::u16string& from, const std::u16string& to, copy_option option) {
    const Place source(from);
    const Place target(to);
    posix::throwIfFailed(copy(source.orThrow(), target.orThrow(), option), from, to);
}

}  // namespace fl::filesystem
