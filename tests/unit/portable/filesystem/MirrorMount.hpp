#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace test {

/// Shows `folder` at the existing folder `mirror` as well, to this process alone: for use in a child. To the
/// system these are two mounts of the same items. False where the host does not let us.
inline bool mountMirror(const std::string& folder, const std::string& mirror) {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount(folder.c_str(), mirror.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

/// Whether mountMirror works here; tried in a child.
inline bool canMountMirror() {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(mountMirror("/tmp", "/tmp") ? 0 : 1);
    }
    int status = 1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace test
