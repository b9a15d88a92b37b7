#include "tests/support/DescriptorCount.hpp"

#include "tests/support/RawFiles.hpp"

#include <dirent.h>

#include <memory>
#include <system_error>

namespace test {

namespace {

struct CloseListing {
    void operator()(DIR* listing) const { ::closedir(listing); }
};

}  // namespace

std::map<int, std::string> openDescriptors() {
    const std::unique_ptr<DIR, CloseListing> listing(::opendir("/proc/self/fd"));
    if (!listing) {
        throw std::system_error(errno, std::system_category(), "/proc/self/fd");
    }
    std::map<int, std::string> result;
    while (const dirent* const entry = ::readdir(listing.get())) {
        const std::string name = entry->d_name;
        if (name != "." && name != ".." && std::stoi(name) != ::dirfd(listing.get())) {
            result[std::stoi(name)] = linkTextOf("/proc/self/fd/" + name);
        }
    }
    return result;
}

}  // namespace test
