#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/platform/filesystem/Operations.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/LinkText.hpp>
#include <pkgcore/portable/filesystem/NativePath.hpp>
#include <pkgcore/portable/filesystem/PathText.hpp>
#include <pkgcore/portable/filesystem/SystemCalls.hpp>

#include <cerrno>

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

void makeLink(const std::string& target, const std::u16string& link) {
    const Place place(link);
    if (posix::systemCalls().symlinkat(target.c_str(), place.orThrow().directory(), place.path()) != 0) {
        posix::throwError(errno, link);
    }
}

std::string readLink(const std::u16string& path) {
    const Place place(path);
    std::string text;
    if (const int error = posix::readLinkText(place.orThrow().directory(), place.path(), text); error != 0) {
        posix::throwError(error, path);
    }
    return text;
}

}  // namespace

void create_symlink(const std::u16string& target, const std::u16string& link, unsigned /*kind*/) {
    makeLink(targetBytes(target), link);
}

std::u16string read_symlink(const std::u16string& path) {
    std::u16string text;
    posix::appendDecoded(readLink(path), text);
    return text;
}

void copy_symlink(const std::u16string& from, const std::u16string& to) { makeLink(readLink(from), to); }

}  // namespace fl::filesystem
