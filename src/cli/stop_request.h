#pragma once

#include "engine/loop/conversion_host.h"

namespace kelvane {

// Lets signals ask for a clean stop: Ctrl-C as a person's wish, where a second one ends the program
// at once; hanging up and the request to terminate as the system's. A signal that whoever started
// the program had ignored stays ignored (nohup). Writing into a closed pipe or beyond a limit of
// size becomes a failure of that write.
void CatchStopRequests();
// What was asked for last; a person's wish stands before the system's.
Wish RequestedWish();

}  // namespace kelvane
