#include "tests/support/RunInChild.hpp"

#include <gtest/gtest.h>

#include <grp.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <system_error>

namespace test {

namespace {

constexpr uid_t ordinaryUser = 65534;

void require(bool fine, const char* what) {
    if (!fine) {
        throw std::system_error(errno, std::system_category(), what);
    }
}

void runBody(const std::function<void()>& body) {
    try {
        body();
    } catch (const std::exception& failure) {
        ADD_FAILURE() << "exception in the child: " << failure.what();
    }
}

[[noreturn]] void beChild(const std::function<void()>& body) {
    runBody(body);
    std::cout.flush();
    std::fflush(nullptr);
    ::_exit(::testing::Test::HasFailure() ? 1 : 0);
}

void dropRights() {
    require(::setgroups(0, nullptr) == 0, "setgroups");
    require(::setresgid(ordinaryUser, ordinaryUser, ordinaryUser) == 0, "setresgid");
    require(::setresuid(ordinaryUser, ordinaryUser, ordinaryUser) == 0, "setresuid");
    // Changing the user takes /proc/self away from the process, which the C library needs to change modes.
    require(::prctl(PR_SET_DUMPABLE, 1) == 0, "prctl");
}

}  // namespace

void runInChild(const std::function<void()>& body) {
    std::cout.flush();
    std::fflush(nullptr);
    const pid_t child = ::fork();
    require(child >= 0, "fork");
    if (child == 0) {
        beChild(body);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        require(errno == EINTR, "waitpid");
    }
    EXPECT_TRUE(WIFEXITED(status)) << "the child ended by signal " << WTERMSIG(status);
    EXPECT_EQ(0, WEXITSTATUS(status)) << "an expectation failed in the child, see above";
}

void runAsOrdinaryUser(const std::function<void()>& body) {
    runInChild([&] {
        if (::geteuid() == 0) {
            dropRights();
        }
        body();
    });
}

void limitResource(__rlimit_resource resource, rlim_t limit) {
    rlimit limits{};
    require(::getrlimit(resource, &limits) == 0, "getrlimit");
    limits.rlim_cur = limit;
    require(::setrlimit(resource, &limits) == 0, "setrlimit");
}

void limitFileSize(rlim_t bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    limitResource(RLIMIT_FSIZE, bytes);
}

}  // namespace test
