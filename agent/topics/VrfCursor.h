#pragma once

#include <optional>
#include <vector>

#include "agent/topics/AgentView.h"
#include "platform/vrf/VrfName.h"

namespace Routing::DirectNet {
class ContainerSm;
}

namespace Agent {

/// Walks the VRFs that have a container at the start, by name. VRFs may come and go meanwhile: one
/// that has gone is passed over, one that comes is not visited.
class VrfCursor {
  public:
    using ContainerSm = Routing::DirectNet::ContainerSm;

    /// One VRF, or all that there are now.
    VrfCursor(const AgentView& view, const std::optional<L3::VrfName>& vrf);

    /// The VRF that the cursor stands on; null if it has gone, and behind the last.
    const ContainerSm* vrf() const;
    /// Goes to the next VRF. Returns false behind the last.
    bool advance();

  private:
    AgentView view_;
    std::vector<L3::VrfName> vrfs_; // the present one and those still to come, in falling order
};

} // namespace Agent
