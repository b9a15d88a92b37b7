#include "Interruption.hpp"

#include <csignal>

namespace tour {

namespace {

volatile std::sig_atomic_t interrupted = 0;

void interrupt(int /*signal*/) { interrupted = 1; }

}  // namespace

void handleSignals() {
    std::signal(SIGINT, interrupt);
    std::signal(SIGTERM, interrupt);
    std::signal(SIGPIPE, SIG_IGN);
}

bool isInterrupted() { return interrupted != 0; }

}  // namespace tour
