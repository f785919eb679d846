#pragma once

#include <csignal>
#include <functional>

#include "agent/base/FileDescriptor.h"
#include "agent/base/Watcher.h"

namespace Agent {

/// Takes the signals SIGINT, SIGTERM and SIGHUP through the event loop instead of letting them
/// interrupt the process, for as long as it lives. Threads that begin meanwhile inherit this.
class Signals {
  public:
    using OnSignal = std::function<void(int signal)>;

    /// Throws FailureError.
    Signals(Orb::Ptr<const Orb::Clock> clock, OnSignal onSignal);
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals();

  private:
    void read();

    OnSignal onSignal_;
    sigset_t before_;
    FileDescriptor file_;
    Watcher watcher_;
};

} // namespace Agent
