#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "platform/vrf/VrfName.h"

namespace Agent {

/// The ids of the VRFs of a live agent: 0 for the default VRF, what the configuration says, else
/// the lowest that is free. A VRF that comes back gets the id that it had, unless the configuration
/// has given that away.
class VrfIds {
  public:
    using Number = std::uint32_t;

    /// The VRF's id; one is chosen if it has none yet.
    Number idOf(const L3::VrfName& name);

    /// Takes over the configuration's section "vrfs". A VRF that runs and loses its configured id
    /// keeps it as one that was chosen.
    void configure(const nlohmann::json& vrfs, const std::set<L3::VrfName>& running);

  private:
    bool isTaken(Number id) const;

    std::map<L3::VrfName, Number> configured_;
    std::map<L3::VrfName, Number> chosen_;
};

} // namespace Agent
