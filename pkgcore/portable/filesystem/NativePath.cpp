#include <pkgcore/portable/filesystem/NativePath.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>
#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/PathText.hpp>
#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <fcntl.h>
#include <limits.h>

#include <cerrno>
#include <cstring>
#include <string_view>

namespace fl::filesystem::posix {

NativePath::NativePath(const std::u16string& path) : NativePath(std::string_view(), path) {}

NativePath::NativePath(BelowRoot place) : NativePath("/", place.path) {}

NativePath::NativePath(std::string_view start, const std::u16string& rest) : text_(rest) {
    if (start.empty() && rest.empty()) {
        throw PathNotFound(rest);
    }
    const std::size_t room = start.size() + rest.size() * kMaxBytesPerUnit + 1;
    if (room > kShortCapacity) {
        longBytes_.reset(new char[room]);  // not make_unique: it would clear what is overwritten at once
    }
    const std::size_t size = encodeText(rest, bytes() + start.copy(bytes(), start.size()));
    if (size == kInvalidText) {
        throw FileNameConversionFailure(rest);
    }
    size_ = start.size() + size;
    while (size_ > 1 && bytes()[size_ - 1] == '/') {
        --size_;
    }
    bytes()[size_] = '\0';
}

Place::Place(const std::u16string& path) : path_(path), rest_(path_.bytes()), directory_(AT_FDCWD) {
    walkIfLong();
}

Place::Place(BelowRoot place) : path_(place), rest_(path_.bytes()), directory_(AT_FDCWD) { walkIfLong(); }

void Place::walkIfLong() {
    if (path_.size() >= PATH_MAX) {
        walk();
    }
}

const Place& Place::orThrow() const {
    if (error_ != 0) {
        throwError(error_, text());
    }
    return *this;
}

bool Place::endsInDots() const noexcept {
    const std::string_view whole(rest_);
    const std::string_view last = whole.substr(whole.rfind('/') + 1);
    return last == "." || last == "..";
}

// Opens the folder of each piece of up to PATH_MAX - 1 bytes and goes on from there; the separator behind a
// piece becomes its end. An element longer than that is left for the system to refuse.
void Place::walk() {
    char* piece = path_.bytes();
    const char* const end = piece + path_.size();
    while (end - piece >= PATH_MAX) {
        char* const cut = static_cast<char*>(::memrchr(piece + 1, '/', PATH_MAX - 1));
        if (cut == nullptr) {
            return;
        }
        *cut = '\0';
        folder_ = openAt(directory_, piece, O_PATH | O_DIRECTORY);
        if (!folder_.isOpen()) {
            error_ = errno;
            return;
        }
        directory_ = folder_.get();
        piece = cut + 1;
        while (*piece == '/') {
            ++piece;
        }
        rest_ = piece;
    }
}

}  // namespace fl::filesystem::posix
