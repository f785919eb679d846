#pragma once

#include <cstddef>
#include <string>

#include "agent/service/ServiceManager.h"
#include "platform/orb/loop/Clock.h"

namespace Agent {

/// What a live agent tells its service manager: when it is ready, when it reads its configuration
/// again, and how much it holds, at most once a second while that changes.
///
/// One agent thread, no locks.
class ServiceReport : private Orb::Clock::NotifieeConst {
  public:
    /// What there is, as the status has it.
    struct Held {
        std::size_t vrfs = 0;
        std::size_t routes = 0;
        std::string missing{}; ///< the VRFs that are waited for, before it is ready

        friend bool operator==(const Held&, const Held&) = default;
    };

    explicit ServiceReport(const Orb::Ptr<const Orb::Clock>& clock);

    /// After each turn of the event loop: whether the VRFs that are waited for are ready, and what
    /// there is.
    void turned(bool isReady, const Held& held);

    void reloadBegins();
    /// How it ended, in words. What was read may still have to become routes.
    void reloadEnded(const std::string& outcome);
    bool isReloading() const { return isReloading_; }
    /// What was read has become routes.
    void reloadSettled();
    void stops() { manager_.stoppingIs(); }

  private:
    void onTimeMin() override;

    ServiceManager manager_;
    bool isReady_ = false;
    bool isReloading_ = false;
    std::string outcome_;
    Held held_;
    Held told_;
    std::string status_; // as it was told last
    double notBefore_ = 0;
};

} // namespace Agent
