#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace test {

/// A process of its own, forked, that runs a body and ends. The body must not return to the test by itself:
/// an exception in it, and an expectation that fails, end the process with a status that is not 0.
class Child {
public:
    explicit Child(const std::function<void()>& body);
    ~Child();
    Child(Child&& other) noexcept : process_(other.process_) { other.process_ = -1; }
    Child& operator=(Child&&) = delete;

    /// As with the power switch: nothing of it runs any more.
    void kill() noexcept;

    /// How it ended: "exit 0", "signal 9".
    std::string wait();

private:
    pid_t process_;
};

/// A pipe for single bytes that say that something was done.
class Signals {
public:
    Signals();
    ~Signals();
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    void send() const;

    /// Waits for the next one; false when everybody who might send has gone.
    bool receive() const;

    /// To be called by who receives, when the others have been started.
    void receiveOnly();

private:
    int ends_[2];
};

}  // namespace test
