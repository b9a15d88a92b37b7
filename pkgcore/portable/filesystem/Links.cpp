#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/LinkCopy.hpp>
#include <pkgcore/portable/filesystem/LinkText.hpp>
#include <pkgcore/portable/filesystem/PathText.hpp>

namespace fl::filesystem {

using posix::Place;

namespace {

// Not a NativePath: a target is kept to the letter, its trailing separators included.
std::string targetBytes(const std::u16string& target) {
    std::string bytes(target.size() * posix::kMaxBytesPerUnit, '\0');
    const std::size_t size = posix::encodeText(target, bytes.data());
    if (size == posix::kInvalidText) {
        throw FileNameConversionFailure(target);
    }
    bytes.resize(size);
    return bytes;
}

}  // namespace

void create_symlink(const std::u16string& target, const std::u16string& link, unsigned /*kind*/) {
    const std::string bytes = targetBytes(target);
    const Place place(link);
    const int directory = place.orThrow().directory();
    const int error = posix::errorOf(
        [&] { return posix::systemCalls().symlinkat(bytes.c_str(), directory, place.path()); });
    if (error != 0) {
        posix::throwError(error, link);
    }
}

std::u16string read_symlink(const std::u16string& path) {
    const Place place(path);
    std::string bytes;
    const int error = posix::readLinkText(place.orThrow().directory(), place.path(), bytes);
    if (error != 0) {
        posix::throwError(error, path);
    }
    std::u16string text;
    posix::appendDecoded(bytes, text);
    return text;
}

void copy_symlink(const std::u16string& from, const std::u16string& to) {
    const Place source(from);
    const Place target(to);
    const posix::Item link = posix::itemAt(source.orThrow());
    posix::throwIfFailed(posix::copyLink(link, posix::itemAt(target.orThrow()), posix::Times::New), from, to);
}

}  // namespace fl::filesystem
