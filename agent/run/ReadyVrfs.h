#pragma once

#include <vector>

#include "agent/run/LiveDevice.h"
#include "directnet/root/RootSm.h"
#include "platform/vrf/VrfName.h"

namespace Agent {

/// The VRFs that a live agent waits for before it calls itself ready: those that are named, or else
/// those that are there once all that is there at the start has been learned.
///
/// The root and the device must outlive it.
class ReadyVrfs {
  public:
    using RootSm = Routing::DirectNet::RootSm;

    ReadyVrfs(const RootSm& root, const LiveDevice& device, std::vector<L3::VrfName> named)
        : root_(root), device_(device), waitedFor_(std::move(named)),
          isNamed_(!waitedFor_.empty()) {}

    /// Looks at how things are. Returns whether all have been ready; once they have that stays.
    bool check();

    /// Those that it waits for at present.
    std::vector<L3::VrfName> missing() const;

    /// Whether the VRF's connected routes of both families are complete.
    static bool isReady(const RootSm& root, const L3::VrfName& vrf);

  private:
    const RootSm& root_;
    const LiveDevice& device_;
    std::vector<L3::VrfName> waitedFor_;
    bool isNamed_;
    bool isLearned_ = false;
    bool areReady_ = false;
};

} // namespace Agent
