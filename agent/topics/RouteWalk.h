#pragma once

#include <optional>

#include "agent/topics/VrfCursor.h"
#include "platform/routing/Route.h"

namespace Agent {

/// Walks the routes VRF by VRF, by name; in a VRF IPv4 before IPv6, and the routes of a family in
/// the order of their table. The tables may change between two steps: a route that is there
/// throughout is visited exactly once.
class RouteWalk {
  public:
    using ContainerSm = VrfCursor::ContainerSm;
    using Route = Routing::Rib::Route;

    RouteWalk(const AgentView& view, const std::optional<L3::VrfName>& vrf)
        : view_(view), vrfs_(view, vrf) {}

    /// The VRF that the walk is in; null if it has gone, and at the end.
    const ContainerSm* vrf() const { return vrfs_.vrf(); }
    /// The VRF's next route; none behind the last.
    std::optional<Route> nextRoute();
    /// Goes on to the next VRF. Returns false behind the last.
    bool nextVrf();

  private:
    AgentView view_;
    VrfCursor vrfs_;
    bool ipv6_ = false;
    std::optional<Routing::Rib::RouteKey> last_;
};

} // namespace Agent
