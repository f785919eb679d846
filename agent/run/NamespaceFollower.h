#pragma once

#include <functional>
#include <nlohmann/json.hpp>

#include "agent/linux/NamespaceMonitor.h"
#include "agent/run/VrfOption.h"
#include "agent/run/Watcher.h"

namespace Agent {

/// Follows the links and addresses of one VRF's namespace in the event loop and hands on what has
/// changed as merge patches.
class NamespaceFollower {
  public:
    using OnPatch = std::function<void(NamespaceFollower&, nlohmann::json patch)>;

    /// Begins at once. Throws Orb::Error if the namespace cannot be entered. A patch is handed on
    /// whenever something has changed; the first one, perhaps empty, once all is known.
    NamespaceFollower(VrfOption vrf, const Orb::Ptr<Orb::Clock>& clock, OnPatch onPatch);

    const VrfOption& vrf() const { return vrf_; }

    /// Whether the first patch has been handed on.
    bool isLearned() const { return learned_; }
    /// Whether nothing is known to be outstanding.
    bool isSettled() const { return learned_ && monitor_.isSettled(); }

    /// The merge patch that takes back what was handed on.
    nlohmann::json withdraw() { return monitor_.withdraw(); }

  private:
    void advance();

    VrfOption vrf_;
    OnPatch onPatch_;
    Linux::NamespaceMonitor monitor_;
    Watcher watcher_;
    bool learned_ = false;
};

} // namespace Agent
