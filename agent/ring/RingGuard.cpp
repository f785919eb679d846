#include "agent/ring/RingGuard.h"

#include <csignal>

#include "platform/ringlog/Ringlog.h"

namespace Agent {

namespace {

void onBusError(int signal, siginfo_t* info, void* /*context*/) {
    if (info->si_code > 0 && Ringlog::recoverFromFault(info->si_addr)) { // not sent by a process
        return;
    }
    // Ends the process once the handler has returned.
    std::signal(signal, SIG_DFL);
    static_cast<void>(std::raise(signal));
}

} // namespace

void guardRing() {
    struct sigaction action {};
    action.sa_sigaction = onBusError;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGBUS, &action, nullptr);
}

} // namespace Agent
