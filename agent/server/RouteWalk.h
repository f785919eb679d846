#pragma once

#include <optional>

#include "agent/server/VrfCursor.h"
#include "platform/routing/Route.h"

namespace Agent {

/// Walks the routes VRF by VRF, in the order of their names, IPv4 before IPv6, within these in the
/// order of the tables. The tables may change between two steps: a route that is there throughout
/// is met exactly once.
class RouteWalk {
  public:
    using ContainerSm = VrfCursor::ContainerSm;
    using Route = Routing::Rib::Route;

    RouteWalk(const AgentView& view, const std::optional<L3::VrfName>& vrf)
        : view_(view), vrfs_(view, vrf) {}

    /// The VRF that the walk is in; null if it is gone, or at the end.
    const ContainerSm* vrf() const { return vrfs_.vrf(); }
    /// The VRF's next route, valid until anything changes; null when all were met.
    const Route* nextRoute();
    /// Goes on to the next VRF. Returns false behind the last.
    bool nextVrf();

  private:
    AgentView view_;
    VrfCursor vrfs_;
    bool ipv6_ = false;
    std::optional<Routing::Rib::RouteKey> last_;
};

} // namespace Agent
