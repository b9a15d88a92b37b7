#include <pkgcore/portable/filesystem/LinkText.hpp>

#include <pkgcore/portable/filesystem/SystemCallHelpers.hpp>

#include <cerrno>

namespace fl::filesystem::posix {

// The size in the link's status is no help: it is 0 in /proc, and the link may be replaced before it is read.
// A text that fills the buffer may have been cut, so only a shorter one counts.
int readLinkText(int directory, const char* path, std::string& text) {
    constexpr std::size_t kFirstSize = 256;
    for (std::size_t size = kFirstSize;; size *= 2) {
        text.resize(size);
        const ssize_t length =
            retryInterrupted([&] { return systemCalls().readlinkat(directory, path, text.data(), size); });
        if (length < 0) {
            return errno;
        }
        if (static_cast<std::size_t>(length) < size) {
            text.resize(static_cast<std::size_t>(length));
            return 0;
        }
    }
}

}  // namespace fl::filesystem::posix
