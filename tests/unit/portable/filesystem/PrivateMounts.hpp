#pragma once

#include "tests/support/RunInChild.hpp"

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

/// Mounts that only a child process sees and that go away with it.
namespace test {

namespace detail {

/// Takes this process out of the mounts that it shares with others.
inline bool leaveSharedMounts() {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

}  // namespace detail

/// Whether a child of this process may mount something.
inline bool canMount() {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(detail::leaveSharedMounts() ? 0 : 1);
    }
    int status = 1;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

/// In a child: an empty file system in memory, of the size that the options give.
inline void mountSmallDisk(const std::string& folder, const char* options) {
    ASSERT_TRUE(detail::leaveSharedMounts());
    ASSERT_EQ(0, ::mount("small", folder.c_str(), "tmpfs", 0, options));
}

/// In a child: shows `folder` at `mirror` as well; to the system these are two mounts of the same items.
inline void mountMirror(const std::string& folder, const std::string& mirror) {
    ASSERT_TRUE(detail::leaveSharedMounts());
    ASSERT_EQ(0, ::mount(folder.c_str(), mirror.c_str(), nullptr, MS_BIND, nullptr));
}

}  // namespace test
