#include "tests/support/SmallDisk.hpp"

#include "tests/support/RawFiles.hpp"
#include "tests/support/TempTree.hpp"

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <system_error>

namespace test {

namespace {

/// Root of a namespace of its own, if not of this one; files that are made belong to the user as before.
bool becomeMounter() {
    const std::string user = std::to_string(::geteuid());
    const std::string group = std::to_string(::getegid());
    if (::unshare(CLONE_NEWNS) == 0) {
        return true;
    }
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        return false;
    }
    try {
        writeInPlace("/proc/self/uid_map", "0 " + user + " 1");
        // A disk that is mounted here takes no file of a group that has no number here.
        writeInPlace("/proc/self/setgroups", "deny");
        writeInPlace("/proc/self/gid_map", "0 " + group + " 1");
        return true;
    } catch (const std::system_error&) {
        return false;  // the host has a say in it that cannot be asked before
    }
}

}  // namespace

bool mountSmallDisk(const std::string& folder, const std::string& size) {
    return becomeMounter() && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("tmpfs", folder.c_str(), "tmpfs", 0, ("size=" + size).c_str()) == 0;
}

bool makeReadOnly(const std::string& folder) {
    return ::mount(nullptr, folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

bool canMountSmallDisk() {
    const TempTree place;
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(mountSmallDisk(place.path(), "64k") ? 0 : 1);
    }
    int status = 1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace test
