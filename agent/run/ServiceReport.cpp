#include "agent/run/ServiceReport.h"

#include <algorithm>

namespace Agent {

namespace {

/// Seconds between two statuses.
constexpr double statusPause = 1;

} // namespace

ServiceReport::ServiceReport(const Orb::Ptr<const Orb::Clock>& clock) : manager_(clock) {
    notifierIs(clock);
}

void ServiceReport::turned(bool isReady, const Held& held) {
    if (!manager_.isThere()) {
        return;
    }
    if (isReady && !isReady_) {
        isReady_ = true;
        manager_.readyIs();
    }
    held_ = held;
    if (timeMin() == Orb::Clock::never && held_ != told_) {
        timeMinIs(std::max(notifier()->now(), notBefore_));
    }
}

/// An agent that has not said that it is ready is still starting for its service manager.
void ServiceReport::reloadBegins() {
    if (isReady_ && manager_.isThere()) {
        isReloading_ = true;
        manager_.reloadingIs();
    }
}

void ServiceReport::reloadEnded(const std::string& outcome) {
    outcome_ = "; " + outcome;
    timeMinIs(notifier()->now());
}

void ServiceReport::reloadSettled() {
    isReloading_ = false;
    manager_.readyIs();
}

void ServiceReport::onTimeMin() {
    told_ = held_;
    notBefore_ = notifier()->now() + statusPause;
    const std::string status =
        (held_.missing.empty() ? "" : "Waiting for VRF " + held_.missing + "; ") + "VRFs: "
        + std::to_string(held_.vrfs) + ", routes: " + std::to_string(held_.routes) + outcome_;
    if (status != status_) {
        status_ = status;
        manager_.statusIs(status);
    }
}

} // namespace Agent
