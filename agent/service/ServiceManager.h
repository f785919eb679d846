#pragma once

#include <deque>
#include <string>

#include "agent/service/NotifySocket.h"
#include "platform/orb/loop/Clock.h"

namespace Agent {

/// Tells whoever runs the agent as a service how it is: that it is ready, reads its configuration
/// again or stops, what it is doing in words, and, where that is asked for, that its event loop
/// still turns. Does nothing where nobody asks, see NotifySocket.
///
/// One agent thread, no locks.
class ServiceManager {
  public:
    /// Goes by the environment: NOTIFY_SOCKET, and WATCHDOG_USEC unless WATCHDOG_PID is another
    /// process.
    explicit ServiceManager(Orb::Ptr<const Orb::Clock> clock);

    bool isThere() const { return socket_.isThere(); }

    void readyIs();
    /// readyIs() follows once that is done.
    void reloadingIs();
    void stoppingIs();
    /// One line for people.
    void statusIs(const std::string& text);

  private:
    class Resend : public Orb::Clock::NotifieeConst {
      public:
        explicit Resend(ServiceManager& owner) : owner_(owner) {}
        void onTimeMin() override { owner_.sendWaiting(); }

      private:
        ServiceManager& owner_;
    };
    class Watchdog : public Orb::Clock::NotifieeConst {
      public:
        explicit Watchdog(ServiceManager& owner) : owner_(owner) {}
        void onTimeMin() override { owner_.feedWatchdog(); }

      private:
        ServiceManager& owner_;
    };

    void tell(std::string text);
    void sendWaiting();
    void feedWatchdog();

    NotifySocket socket_;
    std::deque<std::string> waiting_; // messages that have found no room yet
    double watchdogPeriod_;           // seconds, 0 for none
    Resend resend_{*this};
    Watchdog watchdog_{*this};
};

} // namespace Agent
