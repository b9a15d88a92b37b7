#include <pkgcore/portable/filesystem/RandomName.hpp>

#include <pkgcore/portable/filesystem/Errors.hpp>
#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <cerrno>

namespace fl::filesystem::posix {

namespace {

constexpr std::size_t kLength = 20;
constexpr std::size_t kDraw = 32;  // some more than that, for those that are thrown away

constexpr char16_t kAlphabet[] = u"abcdefghijklmnopqrstuvwxyz0123456789";
constexpr unsigned kLetters = sizeof kAlphabet / sizeof kAlphabet[0] - 1;

// From here on a byte has no counterpart for every letter and would favour some of them.
constexpr unsigned kUneven = 256 / kLetters * kLetters;

std::size_t drawBytes(unsigned char* bytes) {
    const ssize_t drawn = retryInterrupted([&] { return systemCalls().getrandom(bytes, kDraw, 0); });
    if (drawn < 0) {
        throwError(errno, std::u16string());
    }
    return static_cast<std::size_t>(drawn);
}

}  // namespace

void appendRandomName(std::u16string& out) {
    const std::size_t end = out.size() + kLength;
    while (out.size() < end) {
        unsigned char bytes[kDraw];
        const std::size_t drawn = drawBytes(bytes);
        for (std::size_t i = 0; i < drawn && out.size() < end; ++i) {
            if (bytes[i] < kUneven) {
                out.push_back(kAlphabet[bytes[i] % kLetters]);
            }
        }
    }
}

std::u16string temporaryName() {
    std::u16string name = u".";
    appendRandomName(name);
    name += u".tmp";
    return name;
}

}  // namespace fl::filesystem::posix
