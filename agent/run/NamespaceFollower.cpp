#include "agent/run/NamespaceFollower.h"

#include <algorithm>
#include <utility>

#include "platform/orb/value/Error.h"

namespace Agent {

namespace {

/// Seconds between attempts to open a namespace; doubled with each.
constexpr double firstPause = 0.1;
constexpr double longestPause = 5;

Linux::NamespaceMonitor::Options optionsFor(const NamespaceFollower::Options& follower,
                                            const Orb::Ptr<Orb::Clock>& clock) {
    Linux::NamespaceMonitor::Options options;
    options.netns = follower.vrf.netns;
    options.vrf = follower.vrf.vrf;
    options.vrfDevices = follower.vrfDevices;
    if (options.netns != Lanx::NamespaceName::defaultNamespace()) {
        options.netlink.netns = options.netns.value();
    }
    options.clock = [clock] { return clock->now(); };
    return options;
}

} // namespace

NamespaceFollower::NamespaceFollower(Options options, Orb::Ptr<Orb::Clock> clock, OnChange onChange,
                                     OnFailure onFailure)
    : options_(std::move(options)), clock_(std::move(clock)), onChange_(std::move(onChange)),
      onFailure_(std::move(onFailure)), pause_(firstPause), retry_(*this) {
    retry_.notifierIs(clock_);
    open();
}

void NamespaceFollower::open() {
    try {
        monitor_.emplace(optionsFor(options_, clock_));
    } catch (const Orb::Error& error) {
        failureIs(error.what());
        retry_.timeMinIs(clock_->now() + pause_);
        pause_ = std::min(pause_ * 2, longestPause);
        return;
    }
    failureIs({});
    watcher_.emplace(monitor_->fd(), clock_, [this] { advance(); });
    monitor_->start();
    watcher_->wakeAt(monitor_->retryAt());
}

void NamespaceFollower::advance() {
    monitor_->onReadable();
    watcher_->wakeAt(monitor_->retryAt());
    failureIs(monitor_->failure());
    if (!monitor_->isSynchronised()) {
        return;
    }
    if (failure_.empty()) {
        told_.clear();
    }
    learned_ = true;
    onChange_(*this);
}

DevicePatch NamespaceFollower::withdraw() {
    return monitor_ ? monitor_->withdraw() : DevicePatch();
}

void NamespaceFollower::failureIs(std::string failure) {
    failure_ = std::move(failure);
    if (!failure_.empty() && told_.insert(failure_).second) {
        onFailure_(failure_);
    }
}

} // namespace Agent
