#include "tests/sqlite/Child.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <system_error>
#include <utility>

namespace test {

namespace {

long long checked(long long result, const char* what) {
    if (result < 0) throw std::system_error(errno, std::system_category(), what);
    return result;
}

[[noreturn]] void live(const std::function<void()>& body) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        body();
    } catch (const std::exception& failure) {
        ADD_FAILURE() << "exception in a child: " << failure.what();
    }
    std::fflush(nullptr);
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
}

}  // namespace

Child::Child(const std::function<void()>& body) {
    std::fflush(nullptr);
    process_ = static_cast<pid_t>(checked(::fork(), "fork"));
    if (process_ == 0) live(body);
}

Child::~Child() {
    if (process_ > 0) {
        kill();
        wait();
    }
}

void Child::kill() noexcept { ::kill(process_, SIGKILL); }

std::string Child::wait() {
    int status = 0;
    const pid_t process = std::exchange(process_, -1);
    while (::waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) checked(-1, "waitpid");
    }
    return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                               : "exit " + std::to_string(WEXITSTATUS(status));
}

Signals::Signals() : ends_{} { checked(::pipe2(ends_, O_CLOEXEC), "pipe"); }

Signals::~Signals() {
    ::close(ends_[0]);
    if (ends_[1] >= 0) ::close(ends_[1]);
}

void Signals::send() const { checked(::write(ends_[1], "!", 1), "write"); }

bool Signals::receive() const {
    char byte = 0;
    return checked(::read(ends_[0], &byte, 1), "read") == 1;
}

void Signals::receiveOnly() { ::close(std::exchange(ends_[1], -1)); }

}  // namespace test
