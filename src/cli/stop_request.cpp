#include "cli/stop_request.h"

#include <signal.h>
#include <unistd.h>

#include <csignal>

namespace kelvane {

namespace {

volatile std::sig_atomic_t gStop = 0;

extern "C" void NoteStop(int signal)
{
    if (gStop) _exit(128 + signal);
    gStop = 1;
}

}  // namespace

void CatchStopRequests()
{
    struct sigaction action {};
    action.sa_handler = NoteStop;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

bool StopRequested()
{
    return gStop != 0;
}

}  // namespace kelvane
