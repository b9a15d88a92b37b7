#include "Progress.hpp"

#include "Interruption.hpp"

#include <unistd.h>

#include <iostream>

namespace {

constexpr std::size_t kEvery = 16;
constexpr std::size_t kWidth = 79;

bool onTerminal() {
    static const bool terminal = isatty(STDOUT_FILENO) != 0;
    return terminal;
}

}  // namespace

void showProgress(const std::string& title, std::size_t done, std::size_t total) {
    stopIfInterrupted();
    if (onTerminal() && done % kEvery == 0) {
        std::cout << "\r  " << title << ": " << done << " of " << total << std::flush;
    }
}

void clearProgress() {
    if (onTerminal()) {
        std::cout << '\r' << std::string(kWidth, ' ') << '\r' << std::flush;
    }
}
