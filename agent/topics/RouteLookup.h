#pragma once

#include <string_view>

#include "agent/topics/AgentView.h"
#include "agent/topics/StateRows.h"
#include "platform/routing/Route.h"

namespace Agent {

/// Follows single routes through the tables to the interface that they point at, each at a cost
/// that does not grow with anything. Stays valid while the tables change.
class RouteLookup {
  public:
    using Route = Routing::Rib::Route;

    explicit RouteLookup(const AgentView& view) : view_(view) {}

    RouteRow row(const Route& route) const;

  private:
    AgentView view_;
};

} // namespace Agent
