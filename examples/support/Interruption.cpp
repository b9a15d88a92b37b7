#include "Interruption.hpp"

#include <csignal>

namespace {

volatile std::sig_atomic_t interrupted = 0;

/// The next one ends the process, should it wait for something that does not come.
void interrupt(int signal) {
    interrupted = 1;
    static_cast<void>(std::signal(signal, SIG_DFL));
}

}  // namespace

void handleSignals() {
    // Setting these cannot fail: the numbers are ones that may be handled.
    static_cast<void>(std::signal(SIGINT, interrupt));
    static_cast<void>(std::signal(SIGTERM, interrupt));
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
}

bool isInterrupted() { return interrupted != 0; }
