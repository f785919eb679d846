#include "agent/run/NamespaceFollower.h"

#include <algorithm>
#include <utility>

#include "agent/patch/Merge.h"
#include "platform/orb/value/Error.h"

namespace Agent {

namespace {

/// Seconds between attempts to open a namespace; doubled with each.
constexpr double firstPause = 0.1;
constexpr double longestPause = 5;

Linux::NamespaceMonitor::Options optionsFor(const VrfOption& vrf,
                                            const Orb::Ptr<Orb::Clock>& clock) {
    Linux::NamespaceMonitor::Options options;
    options.netns = vrf.netns;
    options.vrf = vrf.vrf;
    if (vrf.netns != Lanx::NamespaceName::defaultNamespace()) {
        options.netlink.netns = vrf.netns.value();
    }
    options.clock = [clock] { return clock->now(); };
    return options;
}

} // namespace

NamespaceFollower::NamespaceFollower(VrfOption vrf, Orb::Ptr<Orb::Clock> clock, OnPatch onPatch,
                                     OnFailure onFailure)
    : vrf_(std::move(vrf)), clock_(std::move(clock)), onPatch_(std::move(onPatch)),
      onFailure_(std::move(onFailure)), pause_(firstPause), retry_(*this) {
    retry_.notifierIs(clock_);
    open();
}

void NamespaceFollower::open() {
    try {
        monitor_.emplace(optionsFor(vrf_, clock_));
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
    DevicePatch patch = monitor_->takePatch();
    const bool isFirst = !std::exchange(learned_, true);
    if (isFirst || !isEmpty(patch)) {
        onPatch_(*this, std::move(patch));
    }
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
