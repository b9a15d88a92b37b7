#include "tests/support/TempTree.hpp"

#include <boost/locale/encoding_utf.hpp>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <system_error>
#include <vector>

namespace test {

namespace {

struct CloseListing {
    void operator()(DIR* listing) const { ::closedir(listing); }
};

bool isFolder(int folder, const std::string& name) {
    struct stat status {};
    return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

int openFolder(int parent, const std::string& name) {
    ::fchmodat(parent, name.c_str(), 0700, 0);
    return ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}

/// Takes the descriptor.
std::vector<std::string> namesIn(int folder) {
    std::vector<std::string> names;
    const std::unique_ptr<DIR, CloseListing> listing(::fdopendir(folder));
    while (const dirent* const entry = listing ? ::readdir(listing.get()) : nullptr) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    return names;
}

/// Empties `name` by moving the folders in it up to `top`: two descriptors do for any depth.
void flatten(int top, const std::string& name) {
    static thread_local unsigned long moved = 0;
    const int folder = openFolder(top, name);
    if (folder < 0) {
        return;
    }
    for (const std::string& inner : namesIn(::dup(folder))) {
        if (isFolder(folder, inner)) {
            ::fchmodat(folder, inner.c_str(), 0700, 0);  // a folder that is moved must be writable itself
            ::renameat(folder, inner.c_str(), top, ("moved-" + std::to_string(moved++)).c_str());
        } else {
            ::unlinkat(folder, inner.c_str(), 0);
        }
    }
    ::close(folder);
}

/// False where nothing could be removed any more.
bool removeOneLevel(int top) {
    bool progress = false;
    for (const std::string& name : namesIn(::openat(top, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC))) {
        const bool folder = isFolder(top, name);
        if (folder) {
            flatten(top, name);
        }
        progress |= ::unlinkat(top, name.c_str(), folder ? AT_REMOVEDIR : 0) == 0;
    }
    return progress;
}

}  // namespace

std::u16string text(std::string_view utf8) {
    return boost::locale::conv::utf_to_utf<char16_t>(utf8.data(), utf8.data() + utf8.size(),
                                                     boost::locale::conv::stop);
}

std::string fastFolder() { return ::access("/dev/shm", W_OK | X_OK) == 0 ? "/dev/shm" : "/tmp"; }

TempTree::TempTree(const std::string& parent) : path_(parent + "/pkgcore-test-XXXXXX") {
    if (::mkdtemp(path_.data()) == nullptr) {
        throw std::system_error(errno, std::system_category(), path_);
    }
}

TempTree::~TempTree() {
    const int top = openFolder(AT_FDCWD, path_);
    if (top >= 0) {
        while (removeOneLevel(top)) {
        }
        ::close(top);
    }
    ::rmdir(path_.c_str());
}

}  // namespace test
