#pragma once

#include <optional>
#include <vector>

#include "agent/server/AgentView.h"

namespace Agent {

/// Walks the VRFs that there are, by name, while they may come and go: those of the beginning that
/// are still there.
class VrfCursor {
  public:
    using ContainerSm = Routing::DirectNet::ContainerSm;

    /// One VRF, or all that there are now.
    VrfCursor(const AgentView& view, const std::optional<L3::VrfName>& vrf);

    /// The VRF that the cursor stands on; null if it is gone, or behind the last.
    const ContainerSm* vrf() const;
    /// Goes to the next VRF. Returns false behind the last.
    bool advance();

  private:
    AgentView view_;
    std::vector<L3::VrfName> vrfs_; // the present one and those still to come, in falling order
};

} // namespace Agent
