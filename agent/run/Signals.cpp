#include "agent/run/Signals.h"

#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

#include "agent/base/Errors.h"

namespace Agent {

namespace {

constexpr int handled[] = {SIGINT, SIGTERM, SIGHUP};

int openSignals(sigset_t& before) {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : handled) {
        // One that the parent had ignored would never arrive.
        std::signal(signal, SIG_DFL);
        sigaddset(&set, signal);
    }
    sigprocmask(SIG_BLOCK, &set, &before);
    const int file = ::signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
    if (file < 0) {
        throw FailureError("cannot take signals");
    }
    return file;
}

} // namespace

Signals::Signals(Orb::Ptr<const Orb::Clock> clock, OnSignal onSignal)
    : onSignal_(std::move(onSignal)), file_(openSignals(before_)),
      watcher_(file_.get(), std::move(clock), [this] { read(); }) {}

Signals::~Signals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

void Signals::read() {
    signalfd_siginfo info{};
    while (::read(file_.get(), &info, sizeof info) == sizeof info) {
        onSignal_(static_cast<int>(info.ssi_signo));
    }
}

} // namespace Agent
