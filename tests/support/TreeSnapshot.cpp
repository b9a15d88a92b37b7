#include "tests/support/TreeSnapshot.hpp"

#include "tests/support/RawFiles.hpp"

#include <boost/format.hpp>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <functional>
#include <memory>

namespace test {

namespace {

struct CloseListing {
    void operator()(DIR* listing) const { ::closedir(listing); }
};

std::string shown(const std::string& content) {
    constexpr std::size_t longestShown = 64;
    return content.size() <= longestShown
               ? "'" + content + "'"
               : str(boost::format("%1% bytes #%2$x") % content.size() % std::hash<std::string>()(content));
}

std::string described(const std::string& path, const struct stat& status) {
    const std::string mode = str(boost::format("%1$04o") % (status.st_mode & 07777U));
    switch (status.st_mode & S_IFMT) {
        case S_IFDIR:
            return "folder " + mode;
        case S_IFREG:
            return "file " + mode + " " + (::access(path.c_str(), R_OK) == 0 ? shown(contentOf(path)) : "?");
        case S_IFLNK:
            return "link -> " + linkTextOf(path);
        default:
            return str(boost::format("kind %1$o ") % (status.st_mode & S_IFMT)) + mode;
    }
}

void addFolder(const std::string& path, const std::string& prefix, TreeSnapshot& result) {
    const std::unique_ptr<DIR, CloseListing> listing(::opendir(path.c_str()));
    while (const dirent* const entry = listing ? ::readdir(listing.get()) : nullptr) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") {
            continue;
        }
        const std::string full = path + '/' + name;
        const struct stat status = statusOf(full);
        result[prefix + name] = described(full, status);
        if (S_ISDIR(status.st_mode)) {
            addFolder(full, prefix + name + '/', result);
        }
    }
}

}  // namespace

TreeSnapshot snapshot(const std::string& folder) {
    TreeSnapshot result;
    addFolder(folder, "", result);
    return result;
}

}  // namespace test
