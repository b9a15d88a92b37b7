#include <pkgcore/portable/filesystem/ParentFolder.hpp>

#include <pkgcore/portable/filesystem/Errors.hpp>

#include <string>
#include <string_view>

namespace fl::filesystem::posix {

namespace {

std::string parentOf(std::string_view path, std::size_t separator) {
    if (separator == std::string_view::npos) {
        return ".";
    }
    return std::string(path.substr(0, separator == 0 ? 1 : separator));
}

}  // namespace

ParentFolder::ParentFolder(const Place& item) : name_(item.path()) {
    const std::string_view path(name_);
    const std::size_t separator = path.rfind('/');
    folder_ = openAt(item.directory(), parentOf(path, separator).c_str(), O_PATH | O_DIRECTORY);
    if (!folder_.isOpen()) {
        throwError(errno, item.text());
    }
    if (separator != std::string_view::npos && path != "/") {  // the root is its own name
        name_ += separator + 1;
    }
}

}  // namespace fl::filesystem::posix
