#pragma once

#include <cstddef>
#include <string>

/// Shows on a terminal how far the work has come, in a line that the next one overwrites; not at each call.
/// Throws Interrupted once a signal has asked the program to stop.
void showProgress(const std::string& title, std::size_t done, std::size_t total);

/// Takes that line away, to make room for another.
void clearProgress();
