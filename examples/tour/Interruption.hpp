#pragma once

namespace tour {

/// Has Ctrl-C and the like ask the tour to stop, instead of ending the process where it stands: the scratch
/// folder has to go first. A reader of the output that goes away is no reason to stop.
void handleSignals();

/// Whether a signal has asked for that.
bool isInterrupted();

}  // namespace tour
