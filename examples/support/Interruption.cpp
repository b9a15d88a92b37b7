#include "Interruption.hpp"

#include <csignal>
#include <ctime>

namespace {

volatile std::sig_atomic_t interrupted = 0;
volatile std::time_t first = 0;

/// One request may arrive as several signals: `timeout` and shells send to the process and to its group. So
/// only one that comes later ends the process, should it wait for something that does not come.
void interrupt(int signal) {
    constexpr std::time_t kOneRequest = 2;  // seconds; a difference of 1 may be a moment around a tick
    const std::time_t now = std::time(nullptr);
    if (interrupted == 0) {
        interrupted = 1;
        first = now;
    } else if (now - first >= kOneRequest) {
        static_cast<void>(std::signal(signal, SIG_DFL));
        static_cast<void>(std::raise(signal));
    }
}

}  // namespace

void handleSignals() {
    // Setting these cannot fail: the numbers are ones that may be handled.
    static_cast<void>(std::signal(SIGINT, interrupt));
    static_cast<void>(std::signal(SIGTERM, interrupt));
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
}

bool isInterrupted() { return interrupted != 0; }

void stopIfInterrupted() {
    if (isInterrupted()) {
        throw Interrupted();
    }
}
