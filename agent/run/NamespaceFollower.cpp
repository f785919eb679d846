#include "agent/run/NamespaceFollower.h"

#include <utility>

namespace Agent {

namespace {

Linux::NamespaceMonitor::Options optionsFor(const VrfOption& vrf,
                                            const Orb::Ptr<Orb::Clock>& clock) {
    Linux::NamespaceMonitor::Options options;
    options.netns = vrf.netns.value();
    options.vrf = vrf.vrf.value();
    if (vrf.netns != Lanx::NamespaceName::defaultNamespace()) {
        options.netlink.netns = vrf.netns.value();
    }
    options.clock = [clock] { return clock->now(); };
    return options;
}

} // namespace

NamespaceFollower::NamespaceFollower(VrfOption vrf, const Orb::Ptr<Orb::Clock>& clock,
                                     OnPatch onPatch)
    : vrf_(std::move(vrf)), onPatch_(std::move(onPatch)), monitor_(optionsFor(vrf_, clock)),
      watcher_(monitor_.fd(), clock, [this] { advance(); }) {
    monitor_.start();
    watcher_.wakeAt(monitor_.retryAt());
}

void NamespaceFollower::advance() {
    monitor_.onReadable();
    watcher_.wakeAt(monitor_.retryAt());
    if (!monitor_.isSynchronised()) {
        return;
    }
    nlohmann::json patch = monitor_.takePatch();
    const bool isFirst = !std::exchange(learned_, true);
    if (isFirst || !patch.empty()) {
        onPatch_(*this, std::move(patch));
    }
}

} // namespace Agent
