#pragma once

namespace kelvane {

// Makes Ctrl-C (and a request to terminate) ask for a clean stop; the second one ends the program
// at once.
void CatchStopRequests();
// True once a stop was asked for.
bool StopRequested();

}  // namespace kelvane
