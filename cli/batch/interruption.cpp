#include "batch/interruption.h"

#include <csignal>
#include <initializer_list>

namespace vistaTrim::cli {

namespace {

volatile std::sig_atomic_t noted = 0;

extern "C" void NoteSignal(int number)
{
    noted = number;
}

} // namespace

void NoteInterruptions()
{
    struct sigaction action = {};
    action.sa_handler = NoteSignal;
    // One-shot: the second signal gets the default action, so that a stuck run can be killed.
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigemptyset(&action.sa_mask);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        sigaction(number, nullptr, &before);
        if (before.sa_handler != SIG_IGN) // as under nohup, which must keep working
            sigaction(number, &action, nullptr);
    }
}

int NotedInterruption()
{
    return noted;
}

} // namespace vistaTrim::cli
