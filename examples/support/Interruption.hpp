#pragma once

/// Has Ctrl-C and the like ask the program to stop, instead of ending the process where it stands: what is
/// temporary has to go first. One that comes seconds later ends it. A reader of the output that goes away is
/// no reason to stop.
void handleSignals();

/// Whether a signal has asked for that.
bool isInterrupted();
