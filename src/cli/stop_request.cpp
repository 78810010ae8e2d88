#include "cli/stop_request.h"

#include <signal.h>
#include <unistd.h>

#include <csignal>

namespace kelvane {

namespace {

volatile std::sig_atomic_t gPersonStops = 0;
volatile std::sig_atomic_t gSystemEnds = 0;

extern "C" void NotePersonsStop(int signal)
{
    if (gPersonStops) _exit(128 + signal);
    gPersonStops = 1;
}

// The system may send several of them for one and the same end.
extern "C" void NoteSystemsEnd(int)
{
    gSystemEnds = 1;
}

void Catch(int signal, void (*handler)(int))
{
    struct sigaction now {};
    if (sigaction(signal, nullptr, &now) == 0 && now.sa_handler == SIG_IGN) return;
    struct sigaction action {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

}  // namespace

void CatchStopRequests()
{
    Catch(SIGINT, NotePersonsStop);
    Catch(SIGTERM, NoteSystemsEnd);
    Catch(SIGHUP, NoteSystemsEnd);
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

Wish RequestedWish()
{
    if (gPersonStops) return Wish::kStop;
    return gSystemEnds ? Wish::kEnd : Wish::kGoOn;
}

}  // namespace kelvane
