#include "Interruption.hpp"

#include <csignal>

namespace {

volatile std::sig_atomic_t interrupted = 0;

void interrupt(int /*signal*/) { interrupted = 1; }

}  // namespace

void handleSignals() {
    // Setting these cannot fail: the numbers are ones that may be handled.
    static_cast<void>(std::signal(SIGINT, interrupt));
    static_cast<void>(std::signal(SIGTERM, interrupt));
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
}

bool isInterrupted() { return interrupted != 0; }
