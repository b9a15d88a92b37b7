#pragma once

#include <stdexcept>

/// A signal has asked the program to stop.
class Interrupted : public std::runtime_error {
public:
    Interrupted() : std::runtime_error("interrupted") {}
};

/// Has Ctrl-C and the like ask the program to stop, instead of ending the process where it stands: what is
/// temporary has to go first. One that comes seconds later ends it. A reader of the output that goes away is
/// no reason to stop.
void handleSignals();

/// Whether a signal has asked for that.
bool isInterrupted();

/// Throws Interrupted if one has.
void stopIfInterrupted();
