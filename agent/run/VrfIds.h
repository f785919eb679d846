#pragma once

#include <map>
#include <set>

#include "agent/patch/DevicePatch.h"

namespace Agent {

/// The ids of the VRFs of a live agent: 0 for the default VRF, what the configuration says, else
/// the lowest that is free. A VRF that comes back gets the id that it had, unless the configuration
/// has given that away.
class VrfIds {
  public:
    using VrfId = Vrf::VrfIdMap::VrfId;

    /// The VRF's id; one is chosen if it has none yet.
    VrfId idOf(const L3::VrfName& name);

    /// Takes over the ids that a configuration has. A VRF that runs and loses its configured id
    /// keeps it as one that was chosen.
    void configure(const DevicePatch& config, const std::set<L3::VrfName>& running);

  private:
    bool isTaken(VrfId id) const;

    std::map<L3::VrfName, VrfId> configured_;
    std::map<L3::VrfName, VrfId> chosen_;
};

} // namespace Agent
