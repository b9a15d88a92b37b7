#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/ParentFolder.hpp>
#include <pkgcore/portable/filesystem/TreeCopy.hpp>

#include <utility>

namespace fl::filesystem {

using posix::FileDescriptor;
using posix::itemAt;
using posix::Place;
using posix::throwError;

namespace {

FileDescriptor openSource(const Place& source) {
    FileDescriptor folder = posix::openFolder(itemAt(source));
    if (!folder.isOpen()) {
        throwError(errno, source.text());
    }
    return folder;
}

/// Looks upwards from the destination, or from the folder that will hold it, for the source.
int refusalOfTarget(const Place& target, const struct stat& source) {
    const FileDescriptor existing = posix::openFolder(itemAt(target));
    if (existing.isOpen()) {
        return posix::refusalIfWithin(existing.get(), source);
    }
    if (errno != ENOENT) {
        return errno;
    }
    return posix::refusalIfWithin(posix::ParentFolder(target).folder(), source);
}

void refuseCopyIntoItself(int folder, const Place& source, const Place& target) {
    struct stat status;
    if (const int error = posix::readStatus(folder, status); error != 0) {
        throwError(error, source.text());
    }
    if (const int error = refusalOfTarget(target, status); error != 0) {
        throwError(error, target.text());
    }
}

}  // namespace

void copy_directory(const std::u16string& from, const std::u16string& to) {
    const Place source(from);
    const Place target(to);
    FileDescriptor folder = openSource(source.orThrow());
    refuseCopyIntoItself(folder.get(), source, target.orThrow());
    posix::DestinationFolder destination = posix::openOrCreateFolder(itemAt(target));
    if (destination.error != 0) {
        throwError(destination.error, to);
    }
    posix::copyTree({std::move(folder), from}, {std::move(destination.folder), to}, destination.created,
                    posix::Times::New);
}

}  // namespace fl::filesystem
